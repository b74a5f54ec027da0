#include "quorvel/platform/image_decoder.h"

#include <climits>
#include <string>

// The decoder is compiled here with our own settings rather than taken from
// the distribution's shared build, so that the dimension cap is ours.
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_NO_STDIO
#define STBI_MAX_DIMENSIONS (1 << 16)
#include <stb/stb_image.h>

namespace quorvel::platform {
namespace {

Error imageError(long code, const std::string& message) {
  return Error::withDescription(ImageDecoder::kErrorDomain, code, message);
}

}  // namespace

Result<Image> ImageDecoder::decode(std::string_view bytes, Limits limits) {
  if (bytes.empty() || bytes.size() > static_cast<std::size_t>(INT_MAX)) {
    return imageError(kUnsupported, "The data is not an image.");
  }
  const auto* data = reinterpret_cast<const stbi_uc*>(bytes.data());
  const int length = static_cast<int>(bytes.size());
  int width = 0;
  int height = 0;
  int channels = 0;
  if (stbi_info_from_memory(data, length, &width, &height, &channels) == 0) {
    return imageError(kUnsupported,
                      std::string("The data is not an image: ") + stbi_failure_reason());
  }
  if (width > limits.maxWidth || height > limits.maxHeight ||
      static_cast<std::int64_t>(width) * height > limits.maxPixels) {
    return imageError(kTooLarge, "The image is " + std::to_string(width) + "x" +
                                     std::to_string(height) + " pixels, more than allowed.");
  }
  stbi_uc* pixels = stbi_load_from_memory(data, length, &width, &height, &channels, 4);
  if (pixels == nullptr) {
    return imageError(kUnsupported,
                      std::string("The image could not be decoded: ") + stbi_failure_reason());
  }
  Image image;
  image.width = width;
  image.height = height;
  image.rgba.assign(pixels, pixels + static_cast<std::size_t>(width) * height * 4);
  stbi_image_free(pixels);
  return image;
}

}  // namespace quorvel::platform
