// Copyright (c) 2026 the mimora developers.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <sstream>

#include "platform/ascii.h"
#include "platform/platform.h"

namespace mimora::platform {
namespace {

constexpr const char* kSettingsFile = "/etc/mimora.conf";

// One call of the kernel never moves more than this.
constexpr int64_t kLargestTransfer = 0x7FFFF000;

template <typename Call>
auto Retry(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

int Refuse(int file, int error) {
  Close(file);
  errno = error;
  return kNoFile;
}

// In the zone that was last set; all zeros for a time that has no date.
tm Local(time_t time) {
  tm local{};
  localtime_r(&time, &local);
  return local;
}

LocalTime ToLocalTime(const tm& local) {
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
          local.tm_min,         local.tm_sec,     local.tm_wday};
}

std::string TemporaryDirectory() {
  const char* directory = secure_getenv("TMPDIR");
  if (directory == nullptr || *directory == '\0') directory = P_tmpdir;
  std::string path = directory;
  if (path.back() != '/') path += '/';
  return path;
}

}  // namespace

std::optional<std::string> FindSetting(std::string_view text, std::string_view name) {
  std::optional<std::string> found;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.size() > name.size() && line.starts_with(name) && line[name.size()] == '=') {
      found = line.substr(name.size() + 1);
    }
  }
  return found;
}

std::optional<std::string> ReadSetting(const char* name) {
  const std::string variable = "MIMORA_" + UpperCase(name);
  if (const char* value = secure_getenv(variable.c_str())) return value;
  std::ifstream file(kSettingsFile);
  std::ostringstream text;
  if (file) text << file.rdbuf();
  return FindSetting(text.view(), name);
}

uint32_t ProcessId() { return static_cast<uint32_t>(getpid()); }

// Not remembered: it changes when the process forks.
uint32_t ThreadId() { return static_cast<uint32_t>(gettid()); }

const void* ThreadToken() {
  thread_local char token;
  return &token;
}

LocalTime Now() { return ToLocalTime(Local(time(nullptr))); }

LocalTime LocalTimeOf(int64_t time) {
  tzset();
  return ToLocalTime(Local(time));
}

int32_t TimeZoneBias() {
  tzset();
  return static_cast<int32_t>(-Local(time(nullptr)).tm_gmtoff / 60);
}

namespace {

int CheckForReading(int file, int64_t* size = nullptr) {
  if (file == -1) return kNoFile;
  struct stat status {};
  if (fstat(file, &status) == -1) return Refuse(file, errno);
  if (S_ISDIR(status.st_mode)) return Refuse(file, EISDIR);
  const bool can_move = S_ISREG(status.st_mode) || lseek(file, 0, SEEK_CUR) != -1;
  if (!can_move) return Refuse(file, ESPIPE);
  if (status.st_size > kLargestFilePosition) return Refuse(file, EOVERFLOW);
  if (size != nullptr) *size = status.st_size;
  return file;
}

}  // namespace

int OpenForReading(const char* name, int64_t* size) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  return CheckForReading(Retry([&] { return open(name, kFlags); }), size);
}

int OpenAgain(int file) {
  const int again = CheckForReading(fcntl(file, F_DUPFD_CLOEXEC, 0));
  if (again != kNoFile && !Seek(again, 0)) return Refuse(again, errno);
  return again;
}

int OpenForWriting(const char* name) {
  // A pipe that nobody reads is an error, not a reason to wait.
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  const int file = Retry([&] { return open(name, kFlags, 0600); });
  if (file == -1) return kNoFile;
  if (fcntl(file, F_SETFL, 0) == -1) return Refuse(file, errno);
  return file;
}

int CreateNew(const char* name) {
  return Retry([&] { return open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600); });
}

int CreateTemporary(std::string& name) {
  static const std::string directory = TemporaryDirectory();
  name = directory + "parXXXXXX.tmp";
  return mkostemps(name.data(), 4, O_CLOEXEC);
}

// Not taken up again after an interruption: the descriptor is gone then as well.
void Close(int file) { close(file); }

void Remove(const char* name) { unlink(name); }

// Not by std::filesystem, whose own form without exceptions ends the process for want of memory.
std::optional<std::vector<std::string>> ListDirectory(const std::string& directory) {
  struct Closer {
    void operator()(DIR* entries) const { closedir(entries); }
  };
  const std::unique_ptr<DIR, Closer> entries(opendir(directory.c_str()));
  if (entries == nullptr) return std::nullopt;
  std::vector<std::string> paths;
  errno = 0;
  while (const dirent* entry = readdir(entries.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") paths.push_back((directory + "/").append(name));
    errno = 0;
  }
  if (errno != 0) return std::nullopt;
  std::sort(paths.begin(), paths.end());
  return paths;
}

bool IsRegularFile(const char* name) {
  struct stat status {};
  return stat(name, &status) == 0 && S_ISREG(status.st_mode);
}

int64_t Read(int file, void* destination, int64_t length) {
  const auto request = static_cast<size_t>(std::min(length, kLargestTransfer));
  return Retry([&] { return read(file, destination, request); });
}

int64_t Write(int file, const void* data, int64_t length) {
  const char* next = static_cast<const char*>(data);
  int64_t left = length;
  while (left > 0) {
    const auto request = static_cast<size_t>(std::min(left, kLargestTransfer));
    const ssize_t count = Retry([&] { return write(file, next, request); });
    if (count <= 0) break;
    next += count;
    left -= count;
  }
  return length - left;
}

bool Seek(int file, int64_t position) { return lseek(file, position, SEEK_SET) != -1; }

int64_t Tell(int file) { return lseek(file, 0, SEEK_CUR); }

AppendFile::AppendFile(const char* name)
    : file_(Retry([&] { return open(name, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600); })) {}

void AppendFile::Write(std::string_view text) {
  if (file_.Number() == kNoFile) return;
  platform::Write(file_.Number(), text.data(), static_cast<int64_t>(text.size()));
}

}  // namespace mimora::platform
