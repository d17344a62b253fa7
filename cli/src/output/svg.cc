#include "output/svg.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <system_error>

#include "output/output_error.h"

extern char** environ;  // NOLINT: named by POSIX, which has no header for it

namespace tree::cli {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
/// A file without a name, which goes away with its object.
using NamelessFile = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void Refuse(int error) {
  throw OutputError("no picture: " + std::generic_category().message(error));
}

NamelessFile MakeNamelessFile() {
  NamelessFile file(std::tmpfile());
  if (file == nullptr) Refuse(errno);
  return file;
}

std::string ContentOf(std::FILE* file) {
  std::string content;
  std::array<char, 4096> block;
  std::rewind(file);
  while (std::size_t const size = std::fread(block.data(), 1, block.size(), file)) {
    content.append(block.data(), size);
  }
  return content;
}

/// Runs the program to its end; gives its status as `waitpid` does.
int Run(std::string const& program, std::FILE* in, std::FILE* out, std::FILE* err) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ::fileno(in), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, ::fileno(out), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, ::fileno(err), STDERR_FILENO);
  std::string name = "dot";
  std::string format = "-Tsvg";
  std::array<char*, 3> arguments = {name.data(), format.data(), nullptr};
  pid_t child = 0;
  int const error =
      ::posix_spawn(&child, program.c_str(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) Refuse(error);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) Refuse(errno);
  }
  return status;
}

}  // namespace

std::string FindDot() {
  char const* const path = std::getenv("PATH");
  std::string_view rest = path == nullptr ? "" : path;
  while (!rest.empty()) {
    std::string_view const folder = rest.substr(0, rest.find(':'));
    rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
    std::string program = std::string(folder) + "/dot";
    if (!folder.empty() && ::access(program.c_str(), X_OK) == 0) return program;
  }
  return "";
}

std::string MakeSvg(std::string const& dot, std::string const& drawing) {
  NamelessFile const in = MakeNamelessFile();
  NamelessFile const out = MakeNamelessFile();
  NamelessFile const err = MakeNamelessFile();
  std::fwrite(drawing.data(), 1, drawing.size(), in.get());
  if (std::fflush(in.get()) != 0) Refuse(errno);
  std::rewind(in.get());
  if (Run(dot, in.get(), out.get(), err.get()) != 0) {
    std::string const said = ContentOf(err.get());
    throw OutputError("no picture: " + dot + " failed: " + said.substr(0, said.find('\n')));
  }
  return ContentOf(out.get());
}

}  // namespace tree::cli
