#include "quorvel/transfer_files.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "quorvel/platform/transport_error.h"

namespace quorvel {
namespace {

using platform::TransportError;
using platform::TransportErrorCode;

platform::Error fileError(TransportErrorCode code, const std::string& path) {
  return TransportError::make(code, path + ": " + std::strerror(errno));
}

}  // namespace

TransferFiles::~TransferFiles() {
  if (upload_ != nullptr) std::fclose(upload_);
  discard();
}

std::optional<platform::Error> TransferFiles::openUpload(const std::string& path) {
  upload_ = std::fopen(path.c_str(), "rbe");
  struct stat info {};
  if (upload_ == nullptr || ::fstat(::fileno(upload_), &info) != 0 || !S_ISREG(info.st_mode)) {
    auto error = fileError(TransportErrorCode::kCannotOpenFile, path);
    if (upload_ != nullptr) std::fclose(upload_);
    upload_ = nullptr;
    return error;
  }
  uploadSize_ = static_cast<curl_off_t>(info.st_size);
  return std::nullopt;
}

std::size_t TransferFiles::read(char* buffer, std::size_t size, std::size_t count, void* user) {
  auto* files = static_cast<TransferFiles*>(user);
  const std::size_t got = std::fread(buffer, 1, size * count, files->upload_);
  return got == 0 && std::ferror(files->upload_) != 0 ? CURL_READFUNC_ABORT : got;
}

// libcurl rewinds the body when it sends the request again (on a kept-alive
// connection that turned out closed, say).
int TransferFiles::seek(void* user, curl_off_t offset, int origin) {
  auto* files = static_cast<TransferFiles*>(user);
  if (files->upload_ == nullptr) return CURL_SEEKFUNC_CANTSEEK;
  return ::fseeko(files->upload_, static_cast<off_t>(offset), origin) == 0 ? CURL_SEEKFUNC_OK
                                                                           : CURL_SEEKFUNC_FAIL;
}

bool TransferFiles::openTemporary() {
  temporary_ = target_ + ".part-XXXXXX";
  const int fd = ::mkostemp(temporary_.data(), O_CLOEXEC);
  if (fd < 0) {
    temporary_.clear();
    return false;
  }
  download_ = ::fdopen(fd, "wb");
  if (download_ == nullptr) {
    ::close(fd);
    ::unlink(temporary_.c_str());
    temporary_.clear();
    return false;
  }
  return true;
}

bool TransferFiles::write(const char* data, std::size_t bytes) {
  if (download_ == nullptr && !openTemporary()) return false;
  return std::fwrite(data, 1, bytes, download_) == bytes;
}

std::optional<platform::Error> TransferFiles::commit() {
  if (download_ == nullptr && !openTemporary()) {
    return fileError(TransportErrorCode::kCannotWriteToFile, target_);
  }
  // Not synced to the disk: the rename makes the file appear whole to other
  // readers, which is what is promised; syncing cost more than the transfer.
  const bool written = std::fflush(download_) == 0;
  const bool closed = std::fclose(download_) == 0;
  download_ = nullptr;
  if (!written || !closed || std::rename(temporary_.c_str(), target_.c_str()) != 0) {
    auto error = fileError(TransportErrorCode::kCannotWriteToFile, target_);
    discard();
    return error;
  }
  temporary_.clear();
  return std::nullopt;
}

void TransferFiles::discard() {
  if (download_ != nullptr) std::fclose(download_);
  download_ = nullptr;
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
  temporary_.clear();
}

}  // namespace quorvel
