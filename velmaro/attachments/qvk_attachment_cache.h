#pragma once

#include <memory>
#include <string>

#include "quorvel/platform/image_decoder.h"

namespace velmaro {

// The process's in-memory cache of decoded attachment images by file name,
// for callers that display them. Made once, on first use; safe from any
// thread. It has no size limit of its own; like any evicting cache it may
// drop an entry, so callers must expect a miss.
class QVKAttachmentCache {
 public:
  using Image = quorvel::platform::Image;

  static std::shared_ptr<const Image> imageWithFilename(const std::string& name);
  // Replaces any earlier image under the name; a missing image changes nothing.
  static void cacheImage(std::shared_ptr<const Image> image, const std::string& name);
  static void clearCache();
};

}  // namespace velmaro
