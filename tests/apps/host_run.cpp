// SPDX-License-Identifier: Apache-2.0
// Child processes with their output and their memory, and temporary folders.
#include "apps/host_run.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

extern char** environ;

namespace apps_test {
namespace {

std::string ReadAll(int file) {
  std::string text;
  char block[4096];
  lseek(file, 0, SEEK_SET);
  for (ssize_t got = 0; (got = read(file, block, sizeof block)) > 0;) text.append(block, static_cast<size_t>(got));
  return text;
}

// Output goes into unlinked files rather than pipes: nothing has to be drained while the child runs.
int MakeUnnamedFile() {
  char name[] = "/tmp/marlo_out_XXXXXX";
  const int file = mkstemp(name);
  if (file < 0) throw std::runtime_error("no temporary file");
  unlink(name);
  return file;
}

}  // namespace

RunResult RunProgram(const std::vector<std::string>& words) {
  setenv("LC_ALL", "C", 1);  // numbers and words as in the expected texts, whatever the user's locale
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const int out = MakeUnnamedFile();
  const int err = MakeUnnamedFile();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out, 1);
  posix_spawn_file_actions_adddup2(&actions, err, 2);
  pid_t child = 0;
  RunResult result;
  if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0) {
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    result.peakKilobytes = usage.ru_maxrss;
    result.out = ReadAll(out);
    result.err = ReadAll(err);
  }
  posix_spawn_file_actions_destroy(&actions);
  close(out);
  close(err);
  return result;
}

RunResult RunHost(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), MARLO_PROGRAM);
  return RunProgram(arguments);
}

bool HasProgram(const std::string& name) {
  const char* path = std::getenv("PATH");
  for (const char* place = path; place != nullptr && *place != 0;) {
    const std::string rest(place);
    const size_t colon = rest.find(':');
    if (access((rest.substr(0, colon) + "/" + name).c_str(), X_OK) == 0) return true;
    if (colon == std::string::npos) break;
    place += colon + 1;
  }
  return false;
}

Folder::Folder() {
  std::string name = (std::filesystem::temp_directory_path() / "marlo_apps_XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = name;
}

Folder::~Folder() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

std::vector<std::string> Folder::Names() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path_))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace apps_test
