#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>

namespace quorvel_test {

/// How a command ended and what it wrote.
struct Finished {
  int status;  ///< of its end, or the negative number of the signal that ended it
  std::string out;
  std::string err;
};

/// Runs the built command as a shell does. Each test works in a directory of its own,
/// with file names relative to it.
class Command : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (std::filesystem::temp_directory_path() / "qvconv-test-XXXXXX").string();
    ASSERT_NE(::mkdtemp(name.data()), nullptr);
    m_directory = name;
  }
  void TearDown() override { std::filesystem::remove_all(m_directory); }

  void write(const std::string& file, std::string_view content) const {
    std::ofstream(m_directory / file, std::ios::binary) << content;
  }
  std::string read(const std::string& file) const {
    std::ostringstream content;
    content << std::ifstream(m_directory / file, std::ios::binary).rdbuf();
    return content.str();
  }
  std::string path(const std::string& file) const { return (m_directory / file).string(); }
  std::size_t fileCount() const {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(m_directory), {}));
  }

  // `arguments` as a shell reads them, redirections included.
  Finished run(const std::string& arguments, std::string_view input = "") const {
    write("stdin", input);
    const std::string line = "cd '" + m_directory.string() +
                             "' && exec 0<stdin >stdout 2>stderr; '" + QVCONV_PATH + "' " +
                             arguments;
    const int status = std::system(line.c_str());
    Finished result{statusOf(status), read("stdout"), read("stderr")};
    for (const char* file : {"stdin", "stdout", "stderr"}) {
      std::filesystem::remove(m_directory / file);
    }
    return result;
  }

  void expectConverted(const Finished& run, const std::string& out) const {
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.err, "");
  }
  void expectFailed(const Finished& run, int status, const std::string& out,
                    const std::string& line) const {
    EXPECT_EQ(run.status, status);
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.err, "qvconv: " + line + "\n");
  }

 private:
  static int statusOf(int status) {
    if (WIFSIGNALED(status)) return -WTERMSIG(status);
    const int code = WEXITSTATUS(status);
    return WIFEXITED(status) ? code : -1;
  }

  std::filesystem::path m_directory;
};

}  // namespace quorvel_test
