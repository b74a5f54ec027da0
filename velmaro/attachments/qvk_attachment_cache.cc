#include "velmaro/attachments/qvk_attachment_cache.h"

#include "quorvel/platform/memory_cache.h"

namespace velmaro {
namespace {

quorvel::platform::MemoryCache<std::string, QVKAttachmentCache::Image>& shared() {
  // A function-local static: its one-time creation is guarded.
  static quorvel::platform::MemoryCache<std::string, QVKAttachmentCache::Image> cache;
  return cache;
}

}  // namespace

std::shared_ptr<const QVKAttachmentCache::Image> QVKAttachmentCache::imageWithFilename(
    const std::string& name) {
  return shared().object(name);
}

void QVKAttachmentCache::cacheImage(std::shared_ptr<const Image> image, const std::string& name) {
  shared().setObject(name, std::move(image));
}

void QVKAttachmentCache::clearCache() {
  shared().removeAll();
}

}  // namespace velmaro
