#include "emulator/upload_store.h"

#include <boost/json.hpp>

#include "emulator/database.h"
#include "emulator/http_support.h"

namespace qvk::emulator {

namespace json = boost::json;

namespace {

constexpr const char* kColumns =
    "SELECT token, attachment_id, file_name, content_type, size, width, height FROM uploads ";

// Width and height of a PNG, read from its header chunk.
std::optional<std::pair<std::int64_t, std::int64_t>> pngSize(const std::string& bytes) {
  static constexpr unsigned char kSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
  if (bytes.size() < 24) return std::nullopt;
  for (std::size_t i = 0; i < sizeof kSignature; ++i)
    if (static_cast<unsigned char>(bytes[i]) != kSignature[i]) return std::nullopt;
  auto be32 = [&](std::size_t at) {
    std::int64_t v = 0;
    for (std::size_t i = 0; i < 4; ++i) v = (v << 8) | static_cast<unsigned char>(bytes[at + i]);
    return v;
  };
  return std::make_pair(be32(16), be32(20));
}

}  // namespace

std::string UploadStore::create(std::int64_t userId, const std::string& fileName,
                                const std::string& contentType, const std::string& bytes) {
  auto guard = db_.lock();
  auto next = db_.queryOne("SELECT COALESCE(MAX(attachment_id), 7000) + 1 FROM uploads");
  std::string token = http::randomToken(25);
  auto size = pngSize(bytes);
  db_.execute(
      "INSERT INTO uploads (token, attachment_id, user_id, file_name, content_type, size, width, "
      "height, content, created_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
      {token, next->integer(0), userId, fileName, contentType,
       static_cast<std::int64_t>(bytes.size()), size ? SqlValue(size->first) : SqlValue(nullptr),
       size ? SqlValue(size->second) : SqlValue(nullptr), Blob{bytes}, http::nowIso()});
  return token;
}

bool UploadStore::remove(const std::string& token, std::int64_t userId) {
  return db_.execute("DELETE FROM uploads WHERE token = ? AND user_id = ? AND comment_id IS NULL",
                     {token, userId}) > 0;
}

json::object UploadStore::attachmentFromRow(const SqlRow& r) const {
  std::string name = r.text(2);
  json::object a{{"id", r.integer(1)},
                 {"file_name", name},
                 {"content_url", base_ + "/attachments/token/" + r.text(0) +
                                     "/?name=" + http::percentEncode(name)},
                 {"mapped_content_url", base_ + "/attachments/token/" + r.text(0) +
                                            "/?name=" + http::percentEncode(name)},
                 {"content_type", r.text(3)},
                 {"size", r.integer(4)},
                 {"inline", false},
                 {"deleted", false},
                 {"thumbnails", json::array{}}};
  if (!r.isNull(5)) {
    a["width"] = r.integer(5);
    a["height"] = r.integer(6);
  }
  return a;
}

std::optional<json::object> UploadStore::attachmentJson(const std::string& token) {
  auto r = db_.queryOne(std::string(kColumns) + "WHERE token = ?", {token});
  if (!r) return std::nullopt;
  return attachmentFromRow(*r);
}

json::array UploadStore::attachmentsOfComment(std::int64_t commentId) {
  json::array out;
  for (const auto& r : db_.query(
           std::string(kColumns) + "WHERE comment_id = ? ORDER BY attachment_id", {commentId}))
    out.push_back(attachmentFromRow(r));
  return out;
}

std::string UploadStore::checkTokens(const std::vector<std::string>& tokens, std::int64_t userId) {
  for (const auto& t : tokens) {
    auto r = db_.queryOne("SELECT user_id, comment_id FROM uploads WHERE token = ?", {t});
    if (!r || r->integer(0) != userId) return "Uploads: unknown upload token " + t;
    if (!r->isNull(1)) return "Uploads: token " + t + " is already attached";
  }
  return {};
}

void UploadStore::attach(const std::vector<std::string>& tokens, std::int64_t commentId) {
  for (const auto& t : tokens)
    db_.execute("UPDATE uploads SET comment_id = ? WHERE token = ?", {commentId, t});
}

std::optional<UploadContent> UploadStore::content(const std::string& token) {
  auto r =
      db_.queryOne("SELECT file_name, content_type, content FROM uploads WHERE token = ?", {token});
  if (!r) return std::nullopt;
  return UploadContent{r->text(0), r->text(1), r->text(2)};
}

}  // namespace qvk::emulator
