#include "card_test_helpers.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>

#include "sim/core/simulator.h"
#include "sim/core/status.h"

namespace qz::sim::test {

nlohmann::json card_profile(const std::string& name) {
    std::ifstream in(std::filesystem::path(QZ_32_SIM_SCENARIO_DIR) / "cards" / (name + ".json"));
    if (!in) throw std::runtime_error("no card profile " + name);
    return nlohmann::json::parse(in);
}

std::shared_ptr<Terminal> terminal_with(const nlohmann::json& card, CardLocation location) {
    nlohmann::json cards = nlohmann::json::object();
    if (location == CardLocation::field)
        cards["field"] = card;
    else
        cards["slots"] = nlohmann::json::array({card});
    return make_terminal(parse_scenario({{"cards", cards}}));
}

Bytes transmit(Terminal& terminal, std::uint8_t class_byte, const Bytes& apdu) {
    Bytes payload{class_byte, 0x31, 0x00};
    payload.insert(payload.end(), apdu.begin(), apdu.end());
    const Reply reply = terminal.execute(payload);
    EXPECT_EQ(reply.status, status::ok);
    return reply.data;
}

std::uint16_t status_words(const Bytes& response) {
    if (response.size() < 2) throw std::invalid_argument("a response without status words");
    return static_cast<std::uint16_t>(response[response.size() - 2] << 8 | response.back());
}

}  // namespace qz::sim::test
