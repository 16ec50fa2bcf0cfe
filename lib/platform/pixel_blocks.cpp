#include "platform/pixel_blocks.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

// Under AddressSanitizer a kept block is poisoned, so that a picture used
// after its release is still caught.
#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(addr, size) ((void)(addr), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(addr, size) ((void)(addr), (void)(size))
#endif

namespace qz::platform {
namespace {

// Each block starts with its capacity, so a block given back can be reused for
// any request that fits it.
struct alignas(std::max_align_t) Header {
    std::size_t capacity;
};

constexpr std::size_t smallest_kept = 64 * 1024;   // smaller blocks go straight back to the system
constexpr std::size_t most_kept = 24 * 1024 * 1024;  // bytes kept for the next picture
constexpr std::size_t most_blocks_kept = 8;

Header* header_of(void* block) { return static_cast<Header*>(block) - 1; }

class BlockCache {
public:
    // The smallest kept block that holds `size`, taken out of the cache.
    Header* take(std::size_t size) {
        const std::lock_guard guard(lock_);
        auto best = kept_.end();
        for (auto it = kept_.begin(); it != kept_.end(); ++it)
            if ((*it)->capacity >= size && (best == kept_.end() || (*it)->capacity < (*best)->capacity)) best = it;
        if (best == kept_.end()) return nullptr;
        Header* found = *best;
        kept_.erase(best);
        ASAN_UNPOISON_MEMORY_REGION(found + 1, found->capacity);
        kept_bytes_ -= found->capacity;
        return found;
    }

    // Keeps `header` if it is worth it and there is room; frees it otherwise.
    void give_back(Header* header) {
        {
            const std::lock_guard guard(lock_);
            if (header->capacity >= smallest_kept && kept_.size() < most_blocks_kept &&
                kept_bytes_ + header->capacity <= most_kept) {
                kept_.push_back(header);
                kept_bytes_ += header->capacity;
                ASAN_POISON_MEMORY_REGION(header + 1, header->capacity);
                return;
            }
        }
        std::free(header);
    }

private:
    std::mutex lock_;
    std::vector<Header*> kept_;
    std::size_t kept_bytes_ = 0;
};

// Never destroyed: pictures may be released by other static objects at exit.
BlockCache& cache() {
    static BlockCache* const shared = new BlockCache;
    return *shared;
}

}  // namespace

void* pixel_block_allocate(std::size_t size) {
    if (size > SIZE_MAX - sizeof(Header)) return nullptr;
    Header* header = size >= smallest_kept ? cache().take(size) : nullptr;
    if (header == nullptr) {
        header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
        if (header == nullptr) return nullptr;
        header->capacity = size;
    }
    return header + 1;
}

void* pixel_block_reallocate(void* block, std::size_t size) {
    if (block == nullptr) return pixel_block_allocate(size);
    const std::size_t capacity = header_of(block)->capacity;
    if (capacity >= size) return block;
    void* larger = pixel_block_allocate(size);
    if (larger == nullptr) return nullptr;
    std::memcpy(larger, block, capacity);
    pixel_block_release(block);
    return larger;
}

void pixel_block_release(void* block) {
    if (block != nullptr) cache().give_back(header_of(block));
}

PixelBytes::PixelBytes(std::size_t size) {
    auto* block = static_cast<std::uint8_t*>(pixel_block_allocate(size));
    if (block == nullptr) return;
    bytes_.reset(block);
    size_ = size;
}

PixelBytes PixelBytes::adopt(void* block, std::size_t size) {
    PixelBytes bytes;
    bytes.bytes_.reset(static_cast<std::uint8_t*>(block));
    bytes.size_ = block == nullptr ? 0 : size;
    return bytes;
}

}  // namespace qz::platform
