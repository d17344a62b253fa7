#include "output/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "output/output_error.h"

namespace tree::cli {
namespace {

namespace fs = std::filesystem;

constexpr int kMaxNumLinks = 40;
constexpr int kMaxNumNames = 1000;  // tried for a temporary file
constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kPermissions = 07777;

[[noreturn]] void Refuse(std::string const& file, int error) {
  throw OutputError(file + ": cannot be written: " + std::generic_category().message(error));
}

/// Names of descriptors that are open already.
bool IsDescriptor(std::string const& file) {
  return file.starts_with("/dev/std") || file.starts_with("/dev/fd/") || file.starts_with("/proc/");
}

/// Where symbolic links lead to.
std::string TargetOf(std::string const& file) {
  fs::path target = file;
  std::error_code error;
  for (int numLinks = 0; fs::is_symlink(target, error); ++numLinks) {
    if (numLinks == kMaxNumLinks) Refuse(file, ELOOP);
    if (IsDescriptor(target.string())) break;
    fs::path const next = fs::read_symlink(target, error);
    if (error) Refuse(file, error.value());
    target = target.parent_path() / next;
  }
  return target.string();
}

std::string FolderOf(std::string const& target) {
  std::string const folder = fs::path(target).parent_path().string();
  return folder.empty() ? "." : folder;
}

/// Whether another file can take the place of this one.
bool IsReplaceable(std::string const& target) {
  std::error_code unknown;
  fs::file_status const status = fs::status(target, unknown);
  return !IsDescriptor(target) && (!fs::exists(status) || fs::is_regular_file(status));
}

/// Gives a file the owner and the permissions of another one, as far as that is possible.
void MakeLike(std::string const& other, int descriptor) {
  struct stat status {};
  if (::stat(other.c_str(), &status) != 0) return;
  // Where the owner cannot be given, the file is written all the same.
  [[maybe_unused]] int ignored = ::fchown(descriptor, status.st_uid, status.st_gid);
  ignored = ::fchmod(descriptor, status.st_mode & kPermissions);
}

/// Opens a new file in the target's folder, as like to the target as can be.
int OpenTemporary(std::string const& file, std::string const& target, std::string& temporary) {
  for (int number = 0; number < kMaxNumNames; ++number) {
    temporary = FolderOf(target) + "/.growtree-" + std::to_string(::getpid()) + '-' +
                std::to_string(number);
    int const descriptor =
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode);
    if (descriptor >= 0) {
      MakeLike(target, descriptor);
      return descriptor;
    }
    if (errno != EEXIST) break;
  }
  int const error = errno;
  temporary.clear();
  Refuse(file, error);
}

int Open(std::string const& file, std::string const& target, std::string& temporary) {
  RequireWritable(file);
  if (IsReplaceable(target)) return OpenTemporary(file, target, temporary);
  int const descriptor = ::open(target.c_str(), O_WRONLY | O_CLOEXEC);
  if (descriptor < 0) Refuse(file, errno);
  return descriptor;
}

}  // namespace

void RequireWritable(std::string const& file) {
  std::string const target = TargetOf(file);
  std::error_code unknown;
  if (fs::is_directory(target, unknown)) Refuse(file, EISDIR);
  if (fs::exists(target, unknown) && ::access(target.c_str(), W_OK) != 0) Refuse(file, errno);
  if (!IsReplaceable(target)) return;
  std::string const folder = FolderOf(target);
  if (fs::exists(folder, unknown) && !fs::is_directory(folder, unknown)) Refuse(file, ENOTDIR);
  if (::access(folder.c_str(), W_OK | X_OK) != 0) Refuse(file, errno);
}

WholeFile::WholeFile(std::string const& file)
    : file_(file),
      target_(TargetOf(file)),
      buffer_(Open(file, target_, temporary_)),
      stream_(&buffer_) {}

WholeFile::~WholeFile() {
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

void WholeFile::Finish() {
  bool const isClosed = buffer_.Close();
  if (!isClosed) Refuse(file_, buffer_.GetError());
  // A stream keeps to itself that what was to be written found no memory.
  if (!stream_) throw std::bad_alloc();
}

void WholeFile::Commit() {
  if (temporary_.empty()) return;
  if (::rename(temporary_.c_str(), target_.c_str()) != 0) Refuse(file_, errno);
  temporary_.clear();
}

}  // namespace tree::cli
