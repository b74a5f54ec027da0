// The upload and attachment providers against the emulator: the wire form,
// the answers, progress, cancellation and one answer per failure.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <strings.h>

#include "quorvel/platform/transport_error.h"
#include "tests/provider_fixture.h"
#include "velmaro/attachments/qvk_attachment_provider.h"
#include "velmaro/attachments/qvk_upload_provider.h"

namespace velmaro::testing {
namespace {

using ::testing::ElementsAre;
using Image = quorvel::platform::Image;

// 2 x 1 pixels; and a picture that claims 100000 x 1 (past the decoder's limit).
const std::string kPng(
    "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x02\x00\x00\x00"
    "\x01\x08\x06\x00\x00\x00\xf4\x22\x7f\x8a\x00\x00\x00\x0e\x49\x44\x41\x54\x78\x9c\x63\xf8\xcf"
    "\xc0\x00\x42\xff\x01\x0f\xf9\x03\xfd\x85\x11\x99\x76\x00\x00\x00\x00\x49\x45\x4e\x44\xae\x42"
    "\x60\x82",
    71);
const std::string kHugePng(
    "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x01\x86\xa0\x00\x00\x00"
    "\x01\x08\x06\x00\x00\x00\x5d\x7e\x16\xd5\x00\x00\x00\x0b\x49\x44\x41\x54\x78\x9c\x63\x60\x80"
    "\x02\x00\x00\x09\x00\x01\xfb\x52\xb8\xa9\x00\x00\x00\x00\x49\x45\x4e\x44\xae\x42\x60\x82",
    68);

// Every byte value, so that nothing is taken for text on the way.
std::string binaryBytes(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 7 + i / 256) % 256);
  return bytes;
}

std::string header(const RequestRecorder::Seen& seen, const std::string& name) {
  for (const auto& field : seen.headers) {
    if (::strcasecmp(field.first.c_str(), name.c_str()) == 0) return field.second;
  }
  return "<none>";
}

class AttachmentProvidersTest : public ProviderFixture {
 protected:
  AttachmentProvidersTest() : ProviderFixture("QVKAPI_") {}

  void startProviders() override {
    uploads_ = std::make_unique<QVKUploadProvider>(core_);
    attachments_ = std::make_unique<QVKAttachmentProvider>(core_);
  }
  void stopProviders() override {
    uploads_.reset();
    attachments_.reset();
  }

  std::filesystem::path writeFile(const std::string& name, const std::string& bytes) {
    const auto path = dataDirectory_ / name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  static std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  // Uploads `bytes`; the attachment's content URL, reached through the relay.
  std::string uploaded(const std::string& bytes, const std::string& name = "file.bin") {
    auto answers = call<QVKUploadResponse>([&](auto cb) {
      uploads_->uploadAttachment(bytes, name, "application/octet-stream", std::move(cb));
    });
    settle();
    notifications_.clear();
    recorder_->clear();
    if (answers->size() != 1 || !(*answers)[0].result) return "";
    const auto& url = (*answers)[0].result->attachment->contentURLString.value_or("");
    return recorder_->url() + url.substr(emulator_->url().size());
  }

  void addFault(const std::string& json) {
    ASSERT_EQ(emulator_->control("POST", "faults", json).status / 100, 2);
  }

  std::unique_ptr<QVKUploadProvider> uploads_;
  std::unique_ptr<QVKAttachmentProvider> attachments_;
};

struct UploadCase {
  const char* label;
  const char* filename;
  const char* target;
  bool fromFile;
  friend void PrintTo(const UploadCase& row, std::ostream* out) { *out << row.label; }
};

class UploadWireTest : public AttachmentProvidersTest,
                       public ::testing::WithParamInterface<UploadCase> {};

TEST_P(UploadWireTest, SendsTheEscapedNameTheBytesAndTwoHeaders) {
  const auto& row = GetParam();
  const auto bytes = binaryBytes(70'000);
  const auto path = writeFile("source.bin", bytes);
  std::size_t notifiedAtAnswer = 0;
  auto answers = call<QVKUploadResponse>([&](auto cb) {
    auto counting = [&, cb](std::optional<QVKUploadResponse> r, std::optional<Error> e) {
      notifiedAtAnswer = notifications_.size();
      cb(std::move(r), std::move(e));
    };
    if (row.fromFile) {
      uploads_->uploadFile(path.string(), row.filename, "image/png", {}, counting);
    } else {
      uploads_->uploadAttachment(bytes, row.filename, "image/png", counting);
    }
  });
  ASSERT_TRUE((*answers)[0].result) << (*answers)[0].error->debugDescription();
  EXPECT_TRUE((*answers)[0].result->uploadToken);
  EXPECT_EQ(notifiedAtAnswer, 2u);  // the success is announced before the answer
  EXPECT_THAT(notificationNames(uploads_.get()),
              ElementsAre("QVKAPI_UploadAttachmentStarting", "QVKAPI_UploadAttachmentSuccess"));

  const auto sent = recorder_->matching("/api/mobile/uploads");
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(sent[0].method, "POST");
  EXPECT_EQ(sent[0].target, row.target);
  EXPECT_TRUE(sent[0].body == bytes);
  EXPECT_EQ(header(sent[0], "Content-Type"), "image/png");
  EXPECT_EQ(header(sent[0], "Content-Length"), "70000");
}

INSTANTIATE_TEST_SUITE_P(
    Names, UploadWireTest,
    ::testing::Values(UploadCase{"plain", "report.pdf",
                                 "/api/mobile/uploads.json?filename=report.pdf", false},
                      UploadCase{"blank", "my photo.png",
                                 "/api/mobile/uploads.json?filename=my%20photo.png", false},
                      UploadCase{"nonAscii", "caf\xc3\xa9.txt",
                                 "/api/mobile/uploads.json?filename=caf%C3%A9.txt", false},
                      UploadCase{"fromFile", "my photo.png",
                                 "/api/mobile/uploads.json?filename=my%20photo.png", true}),
    [](const auto& param) { return std::string(param.param.label); });

TEST_F(AttachmentProvidersTest, DeleteAnswersTheStatusAsTextOrTheError) {
  auto token = call<QVKUploadResponse>([&](auto cb) {
    uploads_->uploadAttachment(std::string("x"), "x.txt", "text/plain", std::move(cb));
  });
  ASSERT_TRUE((*token)[0].result);
  const std::string existing = *(*token)[0].result->uploadToken;
  settle();
  for (const auto& row :
       {std::pair<std::string, long>{existing, 0}, {existing, 404}, {"unknown", 404}}) {
    const std::string name = row.first;
    const long expected = row.second;
    notifications_.clear();
    auto answers = call<std::string>([&](auto cb) { uploads_->deleteUpload(name, std::move(cb)); });
    settle();
    ASSERT_EQ(answers->size(), 1u);
    if (expected == 0) {
      EXPECT_EQ((*answers)[0].result, "204");
      EXPECT_THAT(notificationNames(uploads_.get()),
                  ElementsAre("QVKAPI_DeleteUploadStarting", "QVKAPI_DeleteUploadSuccess"));
    } else {
      ASSERT_TRUE((*answers)[0].error);
      EXPECT_EQ((*answers)[0].error->code, expected);
      EXPECT_THAT(notificationNames(uploads_.get()),
                  ElementsAre("QVKAPI_DeleteUploadStarting", "QVKAPI_DeleteUploadError"));
    }
  }
}

struct DownloadCase {
  const char* label;
  const char* fileName;  // of the upload
  bool blankInUrl;       // the URL names the file with a raw blank
  bool toFile;
  bool otherHost = false;  // the URL names the service's host another way
  friend void PrintTo(const DownloadCase& row, std::ostream* out) { *out << row.label; }
};

class DownloadTest : public AttachmentProvidersTest,
                     public ::testing::WithParamInterface<DownloadCase> {};

TEST_P(DownloadTest, AnswersTheBytesAsTheyWereUploaded) {
  const auto& row = GetParam();
  const auto bytes = binaryBytes(300'000);
  auto url = uploaded(bytes, row.fileName);
  ASSERT_FALSE(url.empty());
  if (row.blankInUrl) url = url.substr(0, url.find("?name=")) + "?name=" + row.fileName;
  if (row.otherHost) url.replace(url.find("127.0.0.1"), 9, "localhost");
  const auto target = dataDirectory_ / "download.bin";
  auto answers = call<std::string>([&](auto cb) {
    if (row.toFile) {
      attachments_->downloadAttachment(url, target.string(), {}, std::move(cb));
    } else {
      attachments_->getAttachmentForUrl(url, std::move(cb));
    }
  });
  ASSERT_TRUE((*answers)[0].result) << (*answers)[0].error->debugDescription();
  EXPECT_TRUE((row.toFile ? readFile(target) : *(*answers)[0].result) == bytes);
  const auto sent = recorder_->matching("/attachments/token/");
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(header(sent[0], "Accept"), "*/*");
  // The access token goes to the service's own host only.
  EXPECT_EQ(header(sent[0], "Authorization").starts_with("Bearer "), !row.otherHost);
  if (row.blankInUrl) {
    EXPECT_THAT(sent[0].target, ::testing::EndsWith("?name=my%20file.bin"));
  }
  EXPECT_TRUE(notifications_.empty());
}

INSTANTIATE_TEST_SUITE_P(Urls, DownloadTest,
                         ::testing::Values(DownloadCase{"asGiven", "a.bin", false, false},
                                           DownloadCase{"blank", "my file.bin", true, false},
                                           DownloadCase{"toFile", "a.bin", false, true},
                                           DownloadCase{"otherHost", "a.bin", false, false, true}),
                         [](const auto& param) { return std::string(param.param.label); });

TEST_F(AttachmentProvidersTest, AvatarsAreDecodedWithinTheDimensionLimit) {
  for (const auto& [bytes, width] :
       {std::pair<std::string, int>{kPng, 2}, {kHugePng, 0}, {std::string("not a picture"), 0}}) {
    const auto url = uploaded(bytes);
    auto answers = call<Image>([&](auto cb) { attachments_->getAvatarForUrl(url, std::move(cb)); });
    ASSERT_EQ(answers->size(), 1u);
    EXPECT_FALSE((*answers)[0].error);
    EXPECT_EQ((*answers)[0].result ? (*answers)[0].result->width : 0, width);
  }
}

class FailureTest;

// Each failure is answered exactly once.
struct FailureCase {
  const char* label;
  const char* fault;  // JSON for /_emulator/faults, or ""
  std::function<void(FailureTest&, ProviderCallback<std::string>)> start;
  const char* domain;
  long code;
  friend void PrintTo(const FailureCase& row, std::ostream* out) { *out << row.label; }
};

class FailureTest : public AttachmentProvidersTest,
                    public ::testing::WithParamInterface<FailureCase> {
 public:
  QVKUploadProvider& uploads() { return *uploads_; }
  QVKAttachmentProvider& attachments() { return *attachments_; }
  std::string url(const std::string& bytes) { return uploaded(bytes); }
  static std::string relay() { return recorder_->url(); }
};

// An upload answered as text: the token, or nothing.
ProviderCallback<QVKUploadResponse> asText(ProviderCallback<std::string> cb) {
  return [cb](std::optional<QVKUploadResponse> r, std::optional<quorvel::platform::Error> e) {
    cb(r ? r->uploadToken : std::nullopt, std::move(e));
  };
}

TEST_P(FailureTest, AnswersTheErrorOnce) {
  const auto& row = GetParam();
  if (row.fault[0] != '\0') addFault(row.fault);
  auto answers = call<std::string>([&](auto cb) { row.start(*this, std::move(cb)); });
  settle(std::chrono::milliseconds(300));
  ASSERT_EQ(answers->size(), 1u);
  ASSERT_TRUE((*answers)[0].error);
  EXPECT_EQ((*answers)[0].error->domain, row.domain);
  EXPECT_EQ((*answers)[0].error->code, row.code);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, FailureTest,
    ::testing::Values(FailureCase{"uploadWithoutName", "",
                                  [](auto& fixture, auto cb) {
                                    fixture.uploads().uploadAttachment(
                                        std::string("x"), std::nullopt, "text/plain", asText(cb));
                                  },
                                  "QVKParameterValidationErrorDomain", 0},
                      FailureCase{"uploadOfMissingFile", "",
                                  [](auto& fixture, auto cb) {
                                    fixture.uploads().uploadFile("/nonexistent/file", "x",
                                                                 "text/plain", {}, asText(cb));
                                  },
                                  "quorvel.transport", -3001},
                      FailureCase{"downloadUnknown", "",
                                  [](auto& fixture, auto cb) {
                                    fixture.attachments().getAttachmentForUrl(
                                        FailureTest::relay() + "/attachments/token/nothing/", cb);
                                  },
                                  "com.quorvel.sdk", 404},
                      FailureCase{"downloadTooLarge", "",
                                  [](auto& fixture, auto cb) {
                                    QVKAttachmentProvider::DownloadOptions options;
                                    options.maxBytes = 1000;
                                    fixture.attachments().getAttachmentForUrl(
                                        fixture.url(binaryBytes(5000)), options, cb);
                                  },
                                  "quorvel.transport", -1103}),
    [](const auto& param) { return std::string(param.param.label); });

// Progress and cancellation: an upload from a file, a download to a file.
class TransferTest : public AttachmentProvidersTest, public ::testing::WithParamInterface<bool> {
 protected:
  // Starts the transfer of 2 MB; `upload` chooses the direction.
  QVKUploadProvider::Handle start(ProviderCallback<std::string> cb,
                                  quorvel::TransferHandle::Progress progress) {
    const auto bytes = binaryBytes(2'000'000);
    if (GetParam()) {
      return uploads_->uploadFile(writeFile("up.bin", bytes).string(), "up.bin",
                                  "application/octet-stream", std::move(progress), asText(cb));
    }
    const auto url = uploaded(bytes);
    return attachments_->downloadAttachment(url, (dataDirectory_ / "down.bin").string(),
                                            {std::move(progress), std::nullopt}, cb);
  }
  const char* path() const { return GetParam() ? "/api/mobile/uploads" : "/attachments/"; }
};

TEST_P(TransferTest, ProgressReachesTheTotalBeforeTheAnswer) {
  std::vector<std::pair<std::int64_t, std::int64_t>> counts;
  std::size_t countsAtAnswer = 0;
  auto answers = call<std::string>([&](auto cb) {
    start(
        [&, cb](auto r, auto e) {
          countsAtAnswer = counts.size();
          cb(std::move(r), std::move(e));
        },
        [&](std::int64_t done, std::int64_t total) { counts.emplace_back(done, total); });
  });
  ASSERT_TRUE((*answers)[0].result) << (*answers)[0].error->debugDescription();
  ASSERT_FALSE(counts.empty());
  EXPECT_EQ(countsAtAnswer, counts.size());
  EXPECT_EQ(counts.back(), std::make_pair(std::int64_t{2'000'000}, std::int64_t{2'000'000}));
}

TEST_P(TransferTest, CancellingAnswersOnceAndLeavesNoFile) {
  addFault(std::string(R"({"delay_ms":1500,"path_prefix":")") + path() + "\"}");
  std::shared_ptr<quorvel::TransferHandle> handle;
  auto answers = std::make_shared<Answers<std::string>>();
  handle = start(collect<std::string>(answers), {});
  settle(std::chrono::milliseconds(300));
  const auto cancelledAt = std::chrono::steady_clock::now();
  handle->cancel();
  ASSERT_TRUE(pumpUntil([&] { return answers->size() == 1; }, std::chrono::milliseconds(1000)));
  EXPECT_LT(std::chrono::steady_clock::now() - cancelledAt, std::chrono::milliseconds(500));
  handle->cancel();
  settle(std::chrono::milliseconds(1500));
  ASSERT_EQ(answers->size(), 1u);
  ASSERT_TRUE((*answers)[0].error);
  EXPECT_EQ((*answers)[0].error->code, -999);
  for (const auto& entry : std::filesystem::directory_iterator(dataDirectory_)) {
    EXPECT_EQ(entry.path().filename().string().find("down.bin"), std::string::npos);
  }
}

INSTANTIATE_TEST_SUITE_P(Directions, TransferTest, ::testing::Bool(),
                         [](const auto& param) { return param.param ? "upload" : "download"; });

}  // namespace
}  // namespace velmaro::testing
