// The HEX reader on hostile files: it stays inside the text whatever the records
// say, refuses with a status of its own, and an image holds no more bytes than
// the records' digits before the end record could carry.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "firmware/intel_hex.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
    const std::vector<std::uint8_t> text(input, input + size);  // exact size for the sanitizer
    const auto image = qz::firmware::parse_hex_image(text);
    if (image.status != 0 && image.status != qz::firmware::status_no_image) __builtin_trap();
    if (image.status != 0 && !image.bytes.empty()) __builtin_trap();
    if (image.bytes.size() > size / 2) __builtin_trap();
    return 0;
}
