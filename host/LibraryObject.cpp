#include "LibraryObject.h"

#include <atomic>

namespace QuillFormatAPA {

namespace {
std::atomic<size_t> liveObjects{0};
}  // namespace

size_t LibraryObject::alive() noexcept { return liveObjects.load(std::memory_order_acquire); }

LibraryObject::LibraryObject() noexcept { liveObjects.fetch_add(1, std::memory_order_relaxed); }
LibraryObject::LibraryObject(const LibraryObject&) noexcept { liveObjects.fetch_add(1, std::memory_order_relaxed); }
LibraryObject::~LibraryObject() { liveObjects.fetch_sub(1, std::memory_order_acq_rel); }

}  // namespace QuillFormatAPA
