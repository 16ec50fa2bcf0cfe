// The chips a contact slot can hold, each built from its configuration.
#pragma once

#include <memory>

#include "sim/models/memcards/chip_config.h"

namespace qz::sim {

std::unique_ptr<MemoryChip> make_sle4442(const ChipConfig& config);
std::unique_ptr<MemoryChip> make_sle4428(const ChipConfig& config);
std::unique_ptr<MemoryChip> make_at88sc102(const ChipConfig& config);
std::unique_ptr<MemoryChip> make_at88sc1604(const ChipConfig& config);
std::unique_ptr<MemoryChip> make_at24c01a(const ChipConfig& config);

}  // namespace qz::sim
