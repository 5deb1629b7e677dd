// Copyright (c) 2026 the mimora developers.
//
// The S_ family: streams.
#include <cerrno>
#include <cinttypes>
#include <memory>
#include <new>

#include "api/frame.h"
#include "diag/result.h"
#include "stream/copy_stream.h"

using namespace mimora;

namespace {

Minstream* MakeInstream(const void* source, int32_t length, const CallbackSource& callbacks,
                        int32_t buffer_size) {
  if (source != nullptr && length == -1) {
    return new (std::nothrow)
        Minstream(FileSource{.name = static_cast<const char*>(source)}, buffer_size);
  }
  if (source != nullptr) {
    return new (std::nothrow) Minstream(MemorySource{.data = source, .length = length});
  }
  if (callbacks.read == nullptr && callbacks.readptr == nullptr) return nullptr;
  return new (std::nothrow) Minstream(callbacks, buffer_size);
}

Moutstream* MakeOutstream(const char* file_name, const CallbackSink& callbacks,
                          int32_t buffer_size) {
  if (file_name != nullptr) {
    return new (std::nothrow) Moutstream(FileSink{.name = file_name}, buffer_size);
  }
  if (callbacks.context != 0) return new (std::nothrow) Moutstream(callbacks, buffer_size);
  if (buffer_size != 0) return new (std::nothrow) Moutstream(FileSink{}, buffer_size);
  return new (std::nothrow) Moutstream(MemorySink{});
}

template <typename Make>
auto Create(const char* name, Make make) {
  LogTrace("%s in", name);
  auto* stream = make();
  LogTrace("%s out [%" PRIXPTR "]", name, reinterpret_cast<uintptr_t>(stream));
  return ToHandle(stream);
}

}  // namespace

// ---- Input ------------------------------------------------------------------------------------

S_InStream* S_CreateInStream(const void* source, int32_t length, S_Context context, S_ReadProc read,
                             S_SeekProc seek, S_TellProc tell, int32_t bufferSize) {
  return Create("S_CreateInStream", [&] {
    const CallbackSource callbacks{.context = context, .read = read, .seek = seek, .tell = tell};
    return MakeInstream(source, length, callbacks, bufferSize);
  });
}

// Writes no trace lines, like the two for the lock.
S_InStream* S_CreateInStream1(S_Context context, int32_t bufferSize, S_ReadPtrProc readptr,
                              S_SeekProc seek, S_TellProc tell) {
  const CallbackSource callbacks{
      .context = context, .readptr = readptr, .seek = seek, .tell = tell};
  return ToHandle(MakeInstream(nullptr, 0, callbacks, bufferSize));
}

void S_DestroyInStream(S_InStream* in) {
  RunExport("S_DestroyInStream", [&](int&) {
    NoteInstream(in);
    delete ToInstream(in);
  });
}

// In the log the two checks have the prefix of the other family.
void S_CheckInStream(S_InStream* in) {
  RunExport("M_CheckInStream", [&](int&) { NoteInstream(in); });
}

void S_SeekReadPos(S_InStream* in, int64_t position) {
  RunExport("S_SeekReadPos", [&](int& ex_pos) {
    NoteInstream(in);
    if (in == nullptr) return;
    ex_pos = 1;
    ToInstream(in)->SetBoundary({});
    ToInstream(in)->SetReadLimit(kNoReadLimit);
    ToInstream(in)->Seek(position);
  });
}

void S_LockInStream(S_InStream* in) {
  if (in != nullptr) ToInstream(in)->Lock();
}

void S_UnlockInStream(S_InStream* in) {
  if (in != nullptr) ToInstream(in)->Unlock();
}

// ---- Output -----------------------------------------------------------------------------------

// The seek and tell functions of a callback stream are for their owner's use.
S_OutStream* S_CreateOutStream(const char* fileName, S_Context context, S_WriteProc write,
                               S_SeekProc /*seek*/, S_TellProc /*tell*/, int32_t bufferSize) {
  return Create("S_CreateOutStream", [&] {
    return MakeOutstream(fileName, {.context = context, .write = write}, bufferSize);
  });
}

void S_DestroyOutStream(S_OutStream* out) {
  RunExport("S_DestroyOutStream", [&](int&) {
    NoteOutstream(out);
    const std::unique_ptr<Moutstream> stream(ToOutstream(out));
    // Not left to the destructor: it could not pass on what the write function throws.
    if (stream != nullptr) stream->FlushAtEnd();
  });
}

void S_CheckOutStream(S_OutStream* out) {
  RunExport("M_CheckOutStream", [&](int&) { NoteOutstream(out); });
}

int32_t S_GetOutStreamBuffer(S_OutStream* out, const void** buffer, uint32_t* length) {
  return RunExport("S_GetOutStreamBuffer", [&](int&) {
    NoteOutstream(out);
    if (out == nullptr) return -1;
    const std::string_view bytes = ToOutstream(out)->GetBuffer();
    if (buffer != nullptr) *buffer = bytes.data();
    if (length != nullptr) *length = static_cast<uint32_t>(bytes.size());
    return 0;
  });
}

int32_t S_GetOutStreamFileName(S_OutStream* out, char* destination, uint32_t size) {
  return RunExport("S_GetOutStreamFileName", [&](int&) {
    NoteOutstream(out);
    if (destination == nullptr || size == 0) return 1;
    *destination = '\0';
    if (out == nullptr || ToOutstream(out)->GetFileName().size() >= size) return 1;
    return CopyCut(ToOutstream(out)->GetFileName(), destination, size);
  });
}

int64_t S_WritePos(S_OutStream* out) {
  return RunExport("S_WritePos", [&](int&) {
    NoteOutstream(out);
    return out != nullptr ? ToOutstream(out)->WritePos() : int64_t{-1};
  });
}

int32_t S_FlushBuffers(S_OutStream* out) {
  return RunExport("S_FlushBuffers", [&](int& ex_pos) -> int32_t {
    NoteOutstream(out);
    if (out == nullptr) return EBADF;
    ex_pos = 1;
    ToOutstream(out)->FlushBuffer();
    return ToOutstream(out)->GetError();
  });
}

// ---- Both -------------------------------------------------------------------------------------

int32_t S_GetIOError(const void* stream) {
  return RunExport("S_GetIOError", [&](int&) -> int32_t {
    switch (SignatureOf(stream)) {
      case kOutstreamSignature:
        NoteOutstream(stream);
        return static_cast<const Moutstream*>(stream)->GetError();
      case kInstreamSignature:
        NoteInstream(stream);
        return static_cast<const Minstream*>(stream)->GetError();
      default:
        return 0;
    }
  });
}

int32_t S_CopyFromInStreamToOutStream(S_InStream* in, S_OutStream* out) {
  const auto work = [&](int&) -> int32_t {
    NoteInstream(in);
    NoteOutstream(out);
    if (in == nullptr || out == nullptr) return kNotOpen;
    return CopyStream(*ToInstream(in), *ToOutstream(out), kWholeStream);
  };
  return RunExport("S_CopyFromInStreamToOutStream", work, [](int) {
    LogError("<E> S_CopyFromInStreamToOutStream 0x%x", static_cast<unsigned>(ExceptionCode()));
  });
}
