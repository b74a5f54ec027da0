// `qvk uploads` and `qvk attachments`: the real binary against the emulator.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <string>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "tools/qvk/file_upload.h"
#include "tools/qvk/qvk_emulator_test.h"

namespace qvk {
namespace {

using testing::InvocationResult;
using testing::QvkInvocation;

TEST(FileUploadContentType, ComesFromTheExtensionInAnyCase) {
  const std::pair<const char*, const char*> rows[] = {
      {"photo.JPG", "image/jpeg"},
      {"scan.tiff", "image/tiff"},
      {"log.txt", "text/plain"},
      {"archive.tar.gz", "application/octet-stream"},
      {"README", "application/octet-stream"},
      {"v1.2/notes", "application/octet-stream"}};
  for (const auto& [path, type] : rows) EXPECT_EQ(FileUpload::contentTypeFor(path), type) << path;
}

// The runs' data folder is "data" inside the test's folder, beside the files.
class TransferCommands : public testing::QvkEmulatorTest {
 protected:
  void SetUp() override {
    QvkEmulatorTest::SetUp();
    folder_ = dataDir_;
    emulator_->control("PUT", "settings", R"({"max_attachment_size":100000})");
  }

  InvocationResult qvk(std::vector<std::string> args) const {
    std::vector<std::string> all{"--url", emulator_->url(), "--data-dir", folder_ / "data"};
    all.insert(all.end(), args.begin(), args.end());
    return QvkInvocation::run(QVK_BINARY, all, "");
  }
  std::string file(const std::string& name, std::size_t size) const {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i % 251);
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
    return (folder_ / name).string();
  }
  static std::string read(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  std::filesystem::path folder_;
};

TEST_F(TransferCommands, AnUploadDownloadsAgainByteForByteAndDeletes) {
  const auto source = file("notes.txt", 50'000);
  const auto added = qvk({"--json", "uploads", "add", source});
  ASSERT_EQ(added.status, 0) << added.err;
  EXPECT_TRUE(added.err.empty()) << "no progress bar off a terminal: " << added.err;
  const auto json = boost::json::parse(added.out).as_object();
  const std::string url(json.at("content_url").as_string());
  EXPECT_EQ(json.at("file_name"), "notes.txt");

  const auto target = folder_ / "copy.txt";
  const auto got = qvk({"attachments", "get", url, "-o", target.string()});
  ASSERT_EQ(got.status, 0) << got.err;
  EXPECT_TRUE(read(target) == read(source));

  const auto deleted = qvk({"uploads", "delete", std::string(json.at("token").as_string())});
  EXPECT_EQ(deleted.status, 0) << deleted.err;
  EXPECT_EQ(deleted.out, "deleted (204)\n");
}

// --attach files are uploaded, and sent with the --token ones.
TEST_F(TransferCommands, AttachedFilesJoinTheRequestAndTheReply) {
  const auto added = qvk({"--json", "uploads", "add", file("earlier.txt", 10)});
  ASSERT_EQ(added.status, 0) << added.err;
  const std::string token(boost::json::parse(added.out).at("token").as_string());

  const auto created = qvk({"--json", "requests", "create", "--description", "See the files",
                            "--attach", file("screen.png", 2'000), "--token", token});
  ASSERT_EQ(created.status, 0) << created.err;
  const std::string id(boost::json::parse(created.out).at_pointer("/request/id").as_string());
  const auto comments = qvk({"--json", "requests", "comments", id});
  ASSERT_EQ(comments.status, 0) << comments.err;
  const auto listed = boost::json::parse(comments.out);
  const auto& first = listed.at_pointer("/comments/0/attachments").as_array();
  ASSERT_EQ(first.size(), 2u) << comments.out;
  std::set<std::string> names;
  for (const auto& attachment : first) names.emplace(attachment.at("file_name").as_string());
  EXPECT_EQ(names, (std::set<std::string>{"screen.png", "earlier.txt"}));

  const auto replied =
      qvk({"--json", "requests", "comment", id, "One more", "--attach", file("log.txt", 500)});
  ASSERT_EQ(replied.status, 0) << replied.err;
  const auto reply = boost::json::parse(replied.out);
  EXPECT_EQ(reply.at_pointer("/comment/attachments/0/file_name"), "log.txt") << replied.out;
}

TEST_F(TransferCommands, FailuresExitOneAndLeaveNoFile) {
  const auto big = file("big.bin", 100'001);
  const auto target = (folder_ / "none.bin").string();
  struct Row {
    std::vector<std::string> args;
    const char* says;
  } rows[] = {
      {{"uploads", "add", big}, "accepts attachments of at most 100000 bytes"},
      {{"attachments", "get", emulator_->url() + "/attachments/token/nothing/", "-o", target},
       "code 404"},
      {{"attachments", "avatar", emulator_->url() + "/attachments/token/nothing/"}, "code 404"},
  };
  for (const auto& row : rows) {
    const auto result = qvk(row.args);
    EXPECT_EQ(result.status, 1) << row.args.at(1);
    EXPECT_NE(result.err.find(row.says), std::string::npos) << result.err;
  }
  for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
    EXPECT_EQ(entry.path().filename().string().find("none.bin"), std::string::npos);
  }
}

}  // namespace
}  // namespace qvk
