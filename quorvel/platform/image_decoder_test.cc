#include "quorvel/platform/image_decoder.h"

#include <string>

#include <gtest/gtest.h>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>

namespace quorvel::platform {
namespace {

std::string encodePng(int width, int height) {
  std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * height * 3);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i * 37);
  std::string out;
  stbi_write_png_to_func(
      [](void* context, void* data, int size) {
        static_cast<std::string*>(context)->append(static_cast<const char*>(data),
                                                   static_cast<std::size_t>(size));
      },
      &out, width, height, 3, pixels.data(), width * 3);
  return out;
}

TEST(ImageDecoderTest, DecodesToRgbaWithTheRightSize) {
  auto image = ImageDecoder::decode(encodePng(3, 2));
  ASSERT_TRUE(image.ok()) << image.error().localizedDescription();
  EXPECT_EQ(image->width, 3);
  EXPECT_EQ(image->height, 2);
  EXPECT_EQ(image->rgba.size(), 3U * 2U * 4U);
  EXPECT_EQ(image->rgba[3], 255);  // opaque alpha added
  EXPECT_EQ(image->rgba[1], 37);
}

struct RejectCase {
  const char* label;
  std::string bytes;
  ImageDecoder::Limits limits;
  long code;
};

TEST(ImageDecoderTest, RejectsWhatItCannotOrMustNotDecode) {
  const RejectCase cases[] = {
      {"empty", "", {}, ImageDecoder::kUnsupported},
      {"text", "definitely not an image", {}, ImageDecoder::kUnsupported},
      {"truncated", encodePng(8, 8).substr(0, 40), {}, ImageDecoder::kUnsupported},
      {"too wide", encodePng(20, 2), {.maxWidth = 10}, ImageDecoder::kTooLarge},
      {"too many pixels", encodePng(20, 20), {.maxPixels = 100}, ImageDecoder::kTooLarge},
  };
  for (const auto& c : cases) {
    auto result = ImageDecoder::decode(c.bytes, c.limits);
    ASSERT_FALSE(result.ok()) << c.label;
    EXPECT_EQ(result.error().domain, ImageDecoder::kErrorDomain) << c.label;
    EXPECT_EQ(result.error().code, c.code) << c.label;
  }
}

}  // namespace
}  // namespace quorvel::platform
