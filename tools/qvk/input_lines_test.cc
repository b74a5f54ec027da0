#include "tools/qvk/input_lines.h"

#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace qvk {
namespace {

using quorvel::platform::RunLoop;
using Lines = std::vector<std::string>;

// Bounds every wait: a line that should come comes at once.
constexpr std::chrono::milliseconds kLimit{5'000};
// How long a line that should not come is waited for.
constexpr std::chrono::milliseconds kNoLine{20};

// A pipe whose write end the test holds.
struct Pipe {
  Pipe() { EXPECT_EQ(pipe2(fds, O_CLOEXEC), 0); }
  ~Pipe() {
    closeWriteEnd();
    close(fds[0]);
  }
  bool write(std::string_view text) const {
    return ::write(fds[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
  }
  void closeWriteEnd() {
    if (fds[1] >= 0) close(fds[1]);
    fds[1] = -1;
  }
  int fds[2] = {-1, -1};
};

struct ChunkCase {
  const char* name;
  // Written one after the other, each with the lines it completes.
  std::vector<std::pair<std::string, Lines>> chunks;
  // The lines that only the end of input completes.
  Lines atEnd;
};

class InputLinesChunks : public ::testing::TestWithParam<ChunkCase> {};

TEST_P(InputLinesChunks, GivesEachWholeLineOnceInOrder) {
  auto loop = std::make_shared<RunLoop>();
  Pipe pipe;
  InputLines input(pipe.fds[0], loop);
  for (const auto& [chunk, lines] : GetParam().chunks) {
    ASSERT_TRUE(pipe.write(chunk));
    for (const auto& line : lines) EXPECT_EQ(input.next(kLimit), line);
    EXPECT_EQ(input.next(kNoLine), std::nullopt) << "after " << chunk;
    EXPECT_FALSE(input.ended());
  }
  pipe.closeWriteEnd();
  for (const auto& line : GetParam().atEnd) EXPECT_EQ(input.next(kLimit), line);
  EXPECT_EQ(input.next(kLimit), std::nullopt);
  EXPECT_TRUE(input.ended());
}

INSTANTIATE_TEST_SUITE_P(
    Input, InputLinesChunks,
    ::testing::Values(ChunkCase{"NoInput", {}, {}},
                      ChunkCase{"OneLine", {{"hc categories\n", {"hc categories"}}}, {}},
                      ChunkCase{"SeveralLinesInOneRead", {{"a\nb\nc\n", {"a", "b", "c"}}}, {}},
                      ChunkCase{"LineSplitAcrossReads",
                                {{"a\nhc sea", {"a"}}, {"rch x", {}}, {"\n", {"hc search x"}}},
                                {}},
                      ChunkCase{"EmptyLinesAreLines", {{"\n\na\n", {"", "", "a"}}}, {}},
                      ChunkCase{"LastLineWithoutNewline", {{"a\nb", {"a"}}}, {"b"}}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

TEST(InputLines, RunsTheMainQueueWhileWaitingForALine) {
  auto loop = std::make_shared<RunLoop>();
  Pipe pipe;
  InputLines input(pipe.fds[0], loop);
  // Only a task on the loop gives the input its line.
  loop->post([&pipe] { pipe.write("from a task\n"); });
  EXPECT_EQ(input.next(kLimit), "from a task");
}

TEST(InputLines, ReadsARegularFileToItsEnd) {
  char path[] = "/tmp/qvk-input-lines-XXXXXX";
  const int fd = mkstemp(path);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(::write(fd, "a\nb", 3), 3);
  lseek(fd, 0, SEEK_SET);
  {
    InputLines input(fd, std::make_shared<RunLoop>());
    EXPECT_EQ(input.next(kLimit), "a");
    EXPECT_EQ(input.next(kLimit), "b");
    EXPECT_EQ(input.next(kLimit), std::nullopt);
    EXPECT_TRUE(input.ended());
  }
  close(fd);
  std::remove(path);
}

}  // namespace
}  // namespace qvk
