#include "output/file_buffer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

namespace tree::cli {
FileBuffer::FileBuffer(int descriptor) noexcept : descriptor_(descriptor) {
  setp(memory_.data(), memory_.data() + memory_.size());
}

FileBuffer::~FileBuffer() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

bool FileBuffer::Close() {
  sync();
  // Pipes and devices cannot be waited for.
  if (::fsync(descriptor_) != 0 && errno != EINVAL && errno != EROFS) Keep(errno);
  if (::close(std::exchange(descriptor_, -1)) != 0) Keep(errno);
  return error_ == 0;
}

FileBuffer::int_type FileBuffer::overflow(int_type character) {
  if (sync() != 0) return traits_type::eof();
  if (!traits_type::eq_int_type(character, traits_type::eof())) {
    sputc(traits_type::to_char_type(character));
  }
  return traits_type::not_eof(character);
}

int FileBuffer::sync() {
  char const* text = pbase();
  while (error_ == 0 && text != pptr()) {
    ssize_t const numWritten = ::write(descriptor_, text, static_cast<std::size_t>(pptr() - text));
    if (numWritten >= 0) {
      text += numWritten;
    } else if (errno != EINTR) {
      Keep(errno);
    }
  }
  setp(memory_.data(), memory_.data() + memory_.size());  // what could not be written is given up
  return error_ == 0 ? 0 : -1;
}

bool FileBuffer::Keep(int error) {
  if (error_ == 0) error_ = error;
  return false;
}

}  // namespace tree::cli
