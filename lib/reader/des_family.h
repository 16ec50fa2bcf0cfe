// The des_ and des3_ operations on 1 to 16 bytes: one or two zero-filled blocks,
// each through des_block once (single) or encrypt-decrypt-encrypt with the two
// halves of a 16-byte key (triple); the front `length` bytes go to `out`.
#pragma once

#include "reader/des.h"

namespace qz::reader {

enum class DesStrength { single, triple };

// 0, or -19 for a length of 0 or above 16 or a missing pointer.
int des_family(DesStrength strength, DesDirection direction, const unsigned char* key, const unsigned char* data,
               unsigned char length, unsigned char* out);

}  // namespace qz::reader
