#include "sim/core/person.h"

#include <algorithm>

namespace qz::sim {
namespace {

bool is_digit(char key) { return key >= '0' && key <= '9'; }

}  // namespace

bool Person::is_key(char key) { return is_digit(key) || key == enter_key || key == clear_key || key == cancel_key; }

void Person::press(char key) {
    if (key == cancel_key) {
        cancelled_ = true;
    } else if (key == clear_key) {
        typed_.clear();
    } else if ((is_digit(key) || key == enter_key) && (typed_.empty() || typed_.back() != enter_key)) {
        typed_ += key;
    }
}

void Person::forget() {
    typed_.clear();
    cancelled_ = false;
}

std::optional<std::string> Person::take_entry(std::size_t longest) {
    if (typed_.empty() || typed_.back() != enter_key) return std::nullopt;
    std::string digits = typed_.substr(0, std::min(typed_.size() - 1, longest));
    typed_.clear();
    return digits;
}

std::optional<char> Person::take_key() {
    if (typed_.empty()) return std::nullopt;
    const char key = typed_.front();
    typed_.erase(0, 1);
    return key;
}

}  // namespace qz::sim
