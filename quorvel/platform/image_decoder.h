#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "quorvel/platform/result.h"

namespace quorvel::platform {

// A decoded bitmap: 8-bit RGBA rows, top row first.
struct Image {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> rgba;
  // Drawn as a mask tinted by the user interface rather than in its colours.
  bool templateRendering = false;
};

// Decodes PNG, JPEG, GIF (first frame), BMP and the like. Dimensions are
// checked before any pixel is decoded, so a small file that claims a huge
// picture cannot exhaust memory.
class ImageDecoder {
 public:
  static constexpr const char* kErrorDomain = "quorvel.image";
  enum Code : long { kUnsupported = 1, kTooLarge = 2 };

  struct Limits {
    int maxWidth = 8192;
    int maxHeight = 8192;
    std::int64_t maxPixels = 32LL * 1024 * 1024;
  };

  static Result<Image> decode(std::string_view bytes, Limits limits);
  static Result<Image> decode(std::string_view bytes) { return decode(bytes, Limits{}); }
};

}  // namespace quorvel::platform
