// Results of a command, printed for people or, with --json, for scripts.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace qzctl {

class Output {
public:
    explicit Output(bool json) : json_(json) {}

    // Adds one labelled value; `key` names it in JSON, `label` for people.
    void add(const std::string& key, const std::string& label, nlohmann::ordered_json value);
    void print() const;
    bool json() const { return json_; }

private:
    bool json_;
    nlohmann::ordered_json values_ = nlohmann::ordered_json::object();
    std::string text_;
};

std::string to_hex(const unsigned char* bytes, std::size_t length);
// Printable text of bytes that are mostly ASCII; others as \xNN.
std::string printable(const unsigned char* bytes, std::size_t length);

}  // namespace qzctl
