// Reading values of a scenario file. Every model that reads a section of its
// own uses these, so that errors name the place in the file the same way.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace qz::sim {

class ScenarioError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Bytes: a string stands for its own bytes, {"hex": "01 a2 ..."} for the bytes
// written in hexadecimal (blanks between them allowed).
std::vector<std::uint8_t> json_bytes(const nlohmann::json& value, const std::string& where);

// An unsigned number up to `max`: a JSON number, or a string "0x..." in hexadecimal.
std::uint64_t json_number(const nlohmann::json& value, std::uint64_t max, const std::string& where);

// The object at `where`, with no keys but `known` (catches misspelt keys).
const nlohmann::json& json_object(const nlohmann::json& value, std::initializer_list<std::string_view> known,
                                  const std::string& where);

}  // namespace qz::sim
