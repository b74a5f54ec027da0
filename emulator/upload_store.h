#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

namespace qvk::emulator {

class Database;
class SqlRow;

struct UploadContent {
  std::string fileName;
  std::string contentType;
  std::string bytes;
};

// Uploaded files: each has a token that a new request or comment names in its
// "uploads" list, which ties the file to that comment as its attachment.
class UploadStore {
 public:
  UploadStore(Database& db, std::string base) : db_(db), base_(std::move(base)) {}

  // Stores the bytes; answers the token.
  std::string create(std::int64_t userId, const std::string& fileName,
                     const std::string& contentType, const std::string& bytes);
  // False when the token is unknown, another user's or already attached.
  bool remove(const std::string& token, std::int64_t userId);
  std::optional<boost::json::object> attachmentJson(const std::string& token);
  boost::json::array attachmentsOfComment(std::int64_t commentId);
  // Checks that every token is the user's and unattached; answers an error
  // text or "".
  std::string checkTokens(const std::vector<std::string>& tokens, std::int64_t userId);
  // Ties the tokens' files to the comment (call checkTokens() first).
  void attach(const std::vector<std::string>& tokens, std::int64_t commentId);
  std::optional<UploadContent> content(const std::string& token);

 private:
  boost::json::object attachmentFromRow(const SqlRow& row) const;

  Database& db_;
  std::string base_;
};

}  // namespace qvk::emulator
