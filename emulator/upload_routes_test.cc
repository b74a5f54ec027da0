#include <string>

#include <gtest/gtest.h>

#include "emulator/emulator_test_support.h"

namespace qvk::emulator::testing {
namespace {

using testing::PrintTo;

struct UploadCase {
  const char* name;
  std::string query;
  std::string body;
  int status;
};

class UploadAnswers : public EmulatorTest, public ::testing::WithParamInterface<UploadCase> {};

TEST_P(UploadAnswers, HaveTheExpectedStatus) {
  const auto& c = GetParam();
  auto a = post("/api/mobile/uploads.json" + c.query, c.body, demoToken(), {}, "text/plain");
  EXPECT_EQ(a.status, c.status) << a.body;
  if (c.status == 201) {
    EXPECT_FALSE(at(a.json, "/upload/token").as_string().empty());
    EXPECT_EQ(at(a.json, "/upload/attachment/size"), static_cast<std::int64_t>(c.body.size()));
    EXPECT_EQ(at(a.json, "/upload/attachment/content_type"), "text/plain");
  } else {
    EXPECT_TRUE(at(a.json, "/error").is_string()) << a.body;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, UploadAnswers,
    ::testing::Values(UploadCase{"plain", "?filename=notes.txt", "hello", 201},
                      UploadCase{"escaped_name", "?filename=my%20notes%20%C3%BC.txt", "hi", 201},
                      UploadCase{"no_name", "", "hello", 422},
                      UploadCase{"empty_file", "?filename=a.txt", "", 422}),
    CaseName());

using Uploads = EmulatorTest;

TEST_F(Uploads, ContentIsDownloadableAndNameDecoded) {
  std::string bytes("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x02\0\0\0\x03", 24);
  auto a =
      post("/api/mobile/uploads.json?filename=my%20shot.png", bytes, demoToken(), {}, "image/png");
  ASSERT_EQ(a.status, 201) << a.body;
  const auto& attachment = at(a.json, "/upload/attachment");
  EXPECT_EQ(at(attachment, "/file_name"), "my shot.png");
  EXPECT_EQ(at(attachment, "/width"), 2);
  EXPECT_EQ(at(attachment, "/height"), 3);
  std::string url(at(attachment, "/content_url").as_string());
  auto content = get(url.substr(url.find("/attachments/")));
  EXPECT_EQ(content.status, 200);
  EXPECT_EQ(content.body, bytes);
  EXPECT_EQ(content.header("Content-Type"), "image/png");
}

TEST_F(Uploads, DeleteRemovesOnlyTheOwnersUpload) {
  auto token = demoToken();
  auto a = post("/api/mobile/uploads.json?filename=a.txt", "abc", token, {}, "text/plain");
  std::string uploadToken(at(a.json, "/upload/token").as_string());
  const std::string path = "/api/mobile/uploads/" + uploadToken + ".json";
  EXPECT_EQ(del(path, anonymousToken("someone-else")).status, 404);
  EXPECT_EQ(del(path, token).status, 204);
  EXPECT_EQ(del(path, token).status, 404);
}

class SmallAttachments : public EmulatorTest {
  void tune(EmulatorOptions& o) override { o.maxAttachmentSize = 4; }
};

TEST_F(SmallAttachments, LargerFilesAreRefused) {
  EXPECT_EQ(post("/api/mobile/uploads.json?filename=a", "12345", demoToken()).status, 413);
  EXPECT_EQ(post("/api/mobile/uploads.json?filename=a", "1234", demoToken()).status, 201);
}

}  // namespace
}  // namespace qvk::emulator::testing
