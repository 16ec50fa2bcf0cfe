// The account number (PAN) and the holder's name of a bank card, by the walk.
#pragma once

#include <cstdint>

#include "bank/card_path.h"

namespace qz::bank {

// The caller's buffers: the PAN as ASCII digits, the name as the card stores it.
struct PanAndName {
    unsigned char* pan;
    unsigned short* pan_length;
    unsigned char* name;
    unsigned short* name_length;
};

// Sets both lengths to 0, then walks the card on `path`:
// - from a GET PROCESSING OPTIONS reply that the path reads, the name (5F20) and
//   the PAN from the Track 2 data (57), whose digits up to the separator are
//   written with a terminator; a 57 ends the walk;
// - from each record, the name (5F20, or 9F0B where the path prefers it) and the
//   PAN (5A) without its one padding F; the walk ends when both are there.
// A contactless card that gave no name with its processing options needs none: its
// walk ends at the first record with a PAN, the name empty unless a record had one.
// A 57 or 5A longer than 19 bytes is no PAN and is passed over.
// Results: those of walk_card; -19 for a null pointer.
int read_pan_and_name(CardPath& path, const PanAndName& out);

}  // namespace qz::bank
