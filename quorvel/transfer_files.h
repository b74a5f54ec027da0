#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>

#include <curl/curl.h>

#include "quorvel/platform/error.h"

namespace quorvel {

// The files of one transfer: the file its body is streamed from, and the file
// its answer is written to. An answer goes to a temporary file in the target's
// folder and is renamed over the target only once complete, so that a failed
// or cancelled download leaves nothing half-written behind (and an earlier
// file of that name untouched). Used on the thread that drives the transfer.
class TransferFiles {
 public:
  TransferFiles() = default;
  // Closes the files and removes a temporary file that was not committed.
  ~TransferFiles();
  TransferFiles(const TransferFiles&) = delete;
  TransferFiles& operator=(const TransferFiles&) = delete;

  // Opens the body's file; its size is the body's length.
  std::optional<platform::Error> openUpload(const std::string& path);
  bool uploading() const { return upload_ != nullptr; }
  curl_off_t uploadSize() const { return uploadSize_; }
  // libcurl's read and seek callbacks over the body's file.
  static std::size_t read(char* buffer, std::size_t size, std::size_t count, void* user);
  static int seek(void* user, curl_off_t offset, int origin);

  // Where a successful answer goes (the temporary file is made at the first
  // byte, or at commit() for an empty answer).
  void downloadTo(std::string target) { target_ = std::move(target); }
  bool downloading() const { return !target_.empty(); }
  // False when the bytes could not be written.
  bool write(const char* data, std::size_t bytes);
  // Completes the file and moves it to the target.
  std::optional<platform::Error> commit();

 private:
  bool openTemporary();
  void discard();

  std::FILE* upload_ = nullptr;
  curl_off_t uploadSize_ = 0;
  std::string target_;
  std::string temporary_;
  std::FILE* download_ = nullptr;
};

}  // namespace quorvel
