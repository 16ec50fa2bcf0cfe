// Memory for pictures: blocks of megabytes that a picture's decode, stretch and
// packing take and give back. Blocks given back are kept for the next picture,
// up to a bound, because handing them to the system and taking fresh ones
// again costs a page fault for every 4 KiB touched, which on some machines
// takes longer than the decoding itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace qz::platform {

// Uninitialised bytes, or nullptr when memory runs out. Any thread.
void* pixel_block_allocate(std::size_t size);
// Like realloc: the first `size` bytes (or fewer, if the block was shorter) kept.
void* pixel_block_reallocate(void* block, std::size_t size);
void pixel_block_release(void* block);

// An owned block of pixel bytes.
class PixelBytes {
public:
    PixelBytes() = default;
    // `size` bytes that the caller sets; empty when memory runs out.
    explicit PixelBytes(std::size_t size);
    // Takes over a block of `size` bytes from pixel_block_allocate.
    static PixelBytes adopt(void* block, std::size_t size);

    std::uint8_t* data() { return bytes_.get(); }
    const std::uint8_t* data() const { return bytes_.get(); }
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    std::uint8_t& operator[](std::size_t at) { return bytes_.get()[at]; }
    std::uint8_t operator[](std::size_t at) const { return bytes_.get()[at]; }
    const std::uint8_t* begin() const { return data(); }
    const std::uint8_t* end() const { return data() + size_; }

private:
    struct Release {
        void operator()(std::uint8_t* block) const { pixel_block_release(block); }
    };
    std::unique_ptr<std::uint8_t, Release> bytes_;
    std::size_t size_ = 0;
};

}  // namespace qz::platform
