// Reading an identity card: the read command, the module's status, and the
// result text, finger text and photo made from the reply.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "identity/photo.h"
#include "identity/record.h"
#include "link/command.h"

namespace qz::identity {

using ReadReply = link::Reply<read_reply_capacity>;

// Result of a step, with the message that goes with it (GBK; the host sees only
// the number).
struct Outcome {
    int result = 0;
    std::string message;
};

// Sends the read command of `mode` (0 or 1) with the module's time-outs and tests
// the module status: 0, the link's failure (no message), or -50.
Outcome read_card(int icdev, int mode, ReadReply& reply);

// The three module status bytes of a read reply: 0 for 00 00 90, else -50.
Outcome module_status(std::span<const std::uint8_t, 3> status);

struct CardTexts {
    std::string base_info;    // fields joined by "|"
    std::string finger_info;  // hexadecimal
};

// Decodes a read reply into `texts` and, with a photo path (at most 254
// characters), makes the photo file. Result 0, -1 (path too long), or that of
// SavePhotoFile.
Outcome IDCardDecodeMsg(int mode, std::span<const std::uint8_t> reply, const char* photo_path, CardTexts& texts,
                        std::string_view library = photo_library);

}  // namespace qz::identity
