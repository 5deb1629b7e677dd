// Copyright (c) 2026 the mimora developers.
//
// A message opened from a file, and the handles of the library as owned objects.
#ifndef MIMORA_TOOL_MESSAGE_H_
#define MIMORA_TOOL_MESSAGE_H_

#include <mimora/mimora.h>

#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tool/output.h"
#include "tool/source.h"

namespace mimora::tool {

template <auto kDestroy>
struct HandleDeleter {
  template <typename Handle>
  void operator()(Handle* handle) const {
    kDestroy(handle);
  }
};
using MessageHandle = std::unique_ptr<M_Bodypart, HandleDeleter<&M_DestroyMessage>>;
using InStreamHandle = std::unique_ptr<S_InStream, HandleDeleter<&S_DestroyInStream>>;
using OutStreamHandle = std::unique_ptr<S_OutStream, HandleDeleter<&S_DestroyOutStream>>;

// A message that cannot be read as asked; the text is the reason, for the user. The result
// is the library's answer, when it was asked.
class MessageError : public std::runtime_error {
 public:
  explicit MessageError(const std::string& reason, std::optional<int32_t> result = std::nullopt)
      : std::runtime_error(reason), result_(result) {}

  std::optional<int32_t> Result() const { return result_; }

 private:
  std::optional<int32_t> result_;
};

// Throws MessageError with the reason, unless the library did what it was asked for.
void CheckResult(int32_t result);

class Message {
 public:
  // PATH "-" is the standard input. Throws MessageError. Damage that the library tolerates is no
  // error: see Result.
  explicit Message(const std::string& path);

  Message(const Message&) = delete;
  Message& operator=(const Message&) = delete;

  const std::string& Path() const { return path_; }
  int64_t Size() const { return static_cast<int64_t>(source_.Bytes().size()); }
  // A piece of the source.
  std::string_view Bytes(int64_t offset, int64_t size) const;
  M_Bodypart* Root() const { return root_.get(); }
  // MIMORA_OK, or one of the codes that come with a complete tree.
  int32_t Result() const { return result_; }
  // What is wrong with the message; empty when nothing is.
  std::string_view Damage() const;

 private:
  // What the library's stream reads from.
  struct Cursor {
    std::string_view bytes;
    int64_t position = 0;
  };
  static int64_t Read(S_Context context, const void** bytes, int64_t length);
  static void Seek(S_Context context, int64_t position);
  static int64_t Tell(S_Context context);

  // The order matters: the tree refers to the stream, the stream to the cursor, the cursor to
  // the source.
  const std::string path_;
  const Source source_;
  Cursor cursor_;
  const InStreamHandle stream_;
  const MessageHandle root_;
  int32_t result_ = MIMORA_OK;
};

// Calls a function that opens a file; whatever goes wrong comes out as MessageError.
template <typename Open>
auto TellAsMessageError(Open open) {
  try {
    return open();
  } catch (const std::system_error& error) {
    throw MessageError(error.what());
  } catch (const std::bad_alloc&) {
    throw MessageError("out of memory");
  }
}

// Throws MessageError.
std::unique_ptr<const Message> OpenMessage(const std::string& path);

// Hands each path to VISIT. One that VISIT refuses with a MessageError is reported and handed to
// FAIL, and the next one has its turn. Returns the exit status.
template <typename Visit, typename Fail>
int ForEachPath(const std::vector<std::string>& paths, Output& out, Visit visit, Fail fail) {
  int status = 0;
  for (const std::string& path : paths) {
    try {
      visit(path);
    } catch (const MessageError& error) {
      status = 1;
      out.ReportError(path.empty() ? "''" : path, error.what());
      fail(path, error);
    }
  }
  return status;
}

inline constexpr auto kReportOnly = [](const std::string&, const MessageError&) {};

// The same for messages; one that cannot be opened counts as refused.
template <typename Visit, typename Fail>
int ForEachMessage(const std::vector<std::string>& paths, Output& out, Visit visit, Fail fail) {
  const auto open_and_visit = [&](const std::string& path) { visit(*OpenMessage(path)); };
  return ForEachPath(paths, out, open_and_visit, fail);
}

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_MESSAGE_H_
