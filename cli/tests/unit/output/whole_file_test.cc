#include "output/whole_file.h"

#include <signal.h>  // NOLINT(modernize-deprecated-headers): of POSIX
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/scratch_folder.h"
#include "output/output_error.h"

namespace tree::cli {
namespace {

namespace fs = std::filesystem;

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::ScratchFolder;
using ::testing::SizeIs;
using ::testing::StartsWith;

/// What a piece of work refuses; empty when it does not.
template <class Work>
std::string Refusal(Work work) {
  try {
    work();
  } catch (OutputError const& error) {
    return error.what();
  }
  return "";
}

void WriteWhole(std::string const& file, std::string const& content) {
  WholeFile whole(file);
  whole.GetStream() << content;
  whole.Finish();
  whole.Commit();
}

std::string RefusalToWrite(std::string const& file) {
  return Refusal([&file] { WriteWhole(file, "new"); });
}

/// Files can grow no larger for as long as this object lives.
class LimitedFileSize {
 public:
  explicit LimitedFileSize(rlim_t size) : formerAction_(::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &former_);
    rlimit const limit = {size, former_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~LimitedFileSize() {
    ::setrlimit(RLIMIT_FSIZE, &former_);
    ::signal(SIGXFSZ, formerAction_);
  }
  LimitedFileSize(LimitedFileSize const&) = delete;
  LimitedFileSize& operator=(LimitedFileSize const&) = delete;

 private:
  rlimit former_{};
  void (*formerAction_)(int);
};

TEST(WholeFile, AppearsWhenItIsCommitted) {
  ScratchFolder const folder;
  {
    WholeFile file(folder.Path("result.csv"));
    file.GetStream() << "a,b\n" << 12 << '\n';
    file.Finish();
    EXPECT_FALSE(fs::exists(folder.Path("result.csv")));

    file.Commit();
  }

  EXPECT_EQ(folder.Read("result.csv"), "a,b\n12\n");
  EXPECT_THAT(folder.GetNames(), ElementsAre("result.csv"));
}

TEST(WholeFile, LeavesNothingBehindWhenItIsGivenUp) {
  ScratchFolder const folder;
  folder.Write("old.csv", "old");
  {
    WholeFile replaced(folder.Path("old.csv"));
    replaced.GetStream() << "new" << std::flush;
    WholeFile finished(folder.Path("new.csv"));
    finished.Finish();
    EXPECT_THAT(folder.GetNames(), SizeIs(3));
  }

  EXPECT_EQ(folder.Read("old.csv"), "old");
  EXPECT_THAT(folder.GetNames(), ElementsAre("old.csv"));
}

TEST(WholeFile, ReplacesAFileAndKeepsItsPermissions) {
  ScratchFolder const folder;
  std::string const file = folder.Write("result.csv", "old and longer");
  ::chmod(file.c_str(), 0640);

  WriteWhole(file, "new");

  EXPECT_EQ(folder.Read("result.csv"), "new");
  EXPECT_EQ(fs::status(file).permissions(), static_cast<fs::perms>(0640));
}

TEST(WholeFile, GivesANewFileThePermissionsThatTheUserWants) {
  ScratchFolder const folder;
  mode_t const former = ::umask(027);

  WriteWhole(folder.Path("result.csv"), "new");

  ::umask(former);
  EXPECT_EQ(fs::status(folder.Path("result.csv")).permissions(), static_cast<fs::perms>(0640));
}

TEST(WholeFile, IsLookedForInTheWorkingFolder) {
  ScratchFolder const folder;
  fs::path const former = fs::current_path();
  fs::current_path(folder.Path(""));

  WriteWhole("result.csv", "new");

  fs::current_path(former);
  EXPECT_EQ(folder.Read("result.csv"), "new");
}

TEST(WholeFile, ReplacesWhatSymbolicLinksLeadTo) {
  ScratchFolder const folder;
  fs::create_directory(folder.Path("real"));
  folder.Write("real/result.csv", "old");
  fs::create_symlink("real/result.csv", folder.Path("first"));
  fs::create_symlink(folder.Path("first"), folder.Path("second"));
  fs::create_symlink("real/none.csv", folder.Path("dangling"));

  WriteWhole(folder.Path("second"), "new");
  WriteWhole(folder.Path("dangling"), "made");

  EXPECT_TRUE(fs::is_symlink(folder.Path("first")));
  EXPECT_TRUE(fs::is_symlink(folder.Path("second")));
  EXPECT_EQ(folder.Read("real/result.csv"), "new");
  EXPECT_EQ(folder.Read("real/none.csv"), "made");
}

TEST(WholeFile, RefusesLinksThatLeadNowhere) {
  ScratchFolder const folder;
  fs::create_symlink("b", folder.Path("a"));
  fs::create_symlink("a", folder.Path("b"));

  EXPECT_EQ(RefusalToWrite(folder.Path("a")),
            folder.Path("a") + ": cannot be written: Too many levels of symbolic links");
}

TEST(WholeFile, WritesToDevicesDirectly) {
  WriteWhole("/dev/null", "new");

  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(WholeFile, WritesToPipesDirectly) {
  ScratchFolder const folder;
  std::string const pipe = folder.Path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::string read;
  std::thread reader([&] { read = folder.Read("pipe"); });

  WriteWhole(pipe, "new");

  reader.join();
  EXPECT_EQ(read, "new");
  EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST(WholeFile, WritesToOpenDescriptorsDirectly) {
  ScratchFolder const folder;
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);

  WriteWhole("/dev/fd/" + std::to_string(ends[1]), "new");

  char read[4] = {};
  EXPECT_EQ(::read(ends[0], read, 3), 3);
  EXPECT_STREQ(read, "new");
  ::close(ends[0]);
  ::close(ends[1]);
}

TEST(WholeFile, RefusesAFolderThatIsMissing) {
  ScratchFolder const folder;

  EXPECT_EQ(RefusalToWrite(folder.Path("none/result.csv")),
            folder.Path("none/result.csv") + ": cannot be written: No such file or directory");
}

TEST(WholeFile, RefusesAFileForAFolder) {
  ScratchFolder const folder;
  folder.Write("file", "");

  EXPECT_EQ(RefusalToWrite(folder.Path("file/result.csv")),
            folder.Path("file/result.csv") + ": cannot be written: Not a directory");
}

TEST(WholeFile, RefusesAFolderForAFile) {
  ScratchFolder const folder;

  EXPECT_EQ(RefusalToWrite(folder.Path("")),
            folder.Path("") + ": cannot be written: Is a directory");
}

TEST(WholeFile, RefusesWhatMayNotBeWritten) {
  if (::geteuid() == 0) GTEST_SKIP() << "root may write everything";
  ScratchFolder const folder;
  std::string const file = folder.Write("result.csv", "old");
  ::chmod(file.c_str(), 0444);

  EXPECT_EQ(RefusalToWrite(file), file + ": cannot be written: Permission denied");
  EXPECT_EQ(folder.Read("result.csv"), "old");
}

TEST(WholeFile, RefusesAFolderWhereNothingCanBeMade) {
  EXPECT_THAT(RefusalToWrite("/sys/kernel/result.csv"),
              StartsWith("/sys/kernel/result.csv: cannot be written: "));
}

TEST(WholeFile, RefusesADeviceThatIsFull) {
  EXPECT_EQ(RefusalToWrite("/dev/full"), "/dev/full: cannot be written: No space left on device");
}

TEST(WholeFile, LeavesTheOldFileWhereANewOneHasNoRoom) {
  ScratchFolder const folder;
  std::string const file = folder.Write("result.csv", "old");
  std::string message;
  {
    LimitedFileSize const limit(100000);
    message = Refusal([&] { WriteWhole(file, std::string(1000000, 'x')); });
  }

  EXPECT_EQ(message, file + ": cannot be written: File too large");
  EXPECT_EQ(folder.Read("result.csv"), "old");
  EXPECT_THAT(folder.GetNames(), ElementsAre("result.csv"));
}

TEST(WholeFile, RefusesATargetThatBecameAFolderMeanwhile) {
  ScratchFolder const folder;
  std::string message;
  {
    WholeFile file(folder.Path("result.csv"));
    file.Finish();
    fs::create_directory(folder.Path("result.csv"));
    message = Refusal([&] { file.Commit(); });
  }

  EXPECT_EQ(message, folder.Path("result.csv") + ": cannot be written: Is a directory");
  EXPECT_THAT(folder.GetNames(), ElementsAre("result.csv"));
}

TEST(WholeFile, PassesOverNamesOfTemporaryFilesThatAreTaken) {
  ScratchFolder const folder;
  std::string const taken = ".growtree-" + std::to_string(::getpid()) + "-0";
  folder.Write(taken, "somebody's");

  WriteWhole(folder.Path("result.csv"), "new");

  EXPECT_EQ(folder.Read("result.csv"), "new");
  EXPECT_EQ(folder.Read(taken), "somebody's");
}

TEST(RequireWritable, LeavesNoTrace) {
  ScratchFolder const folder;

  RequireWritable(folder.Path("result.csv"));

  EXPECT_THAT(folder.GetNames(), IsEmpty());
}

}  // namespace
}  // namespace tree::cli
