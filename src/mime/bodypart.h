// Copyright (c) 2026 the mimora developers.
//
// One node of a message's tree; the message itself is the root. A part records where its header and
// body lie in the input stream; it holds no byte of a body.
//
// Several threads may read one tree while none changes it.
#ifndef MIMORA_MIME_BODYPART_H_
#define MIMORA_MIME_BODYPART_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "diag/checks.h"
#include "mime/field_value.h"
#include "mime/header_fields.h"
#include "mime/inline_vector.h"
#include "stream/minstream.h"

namespace mimora {

// Where a body comes from.
enum DataDefinition : int32_t {
  kNoBody = 0,
  kBodyInStream = 1,  // BodyStart and BodyLength in BodyStream
  kBodyInFile = 2,    // the file BodyFileName
  kBodyInMemory = 3,  // BodyLength bytes at BodyMemory
  kBodyDetached = 4,  // as kBodyInStream, in a stream that is still to be named
  kBodyInPart = 5,    // the bytes of BodyFileName itself
};

// What Flags tells.
enum BodypartFlag : uint32_t { kReceiptRequested = 0x1, kSigned = 0x2, kPkcs7 = 0x4 };

// A file found inside a body.
struct EmbeddedAttachment {
  std::string Name;
  int64_t DecodedSize = 0;
  int64_t Offset = 0;       // uuencoded: from BodyStart; TNEF: inside the decoded TNEF stream
  int64_t BlockLength = 0;  // uuencoded: from its "begin" line through its "end" line
};

class Bodypart;
class BodypartArena;

struct BodypartDeleter {
  void operator()(Bodypart* part) const;
};
using BodypartPtr = std::unique_ptr<Bodypart, BodypartDeleter>;

class Bodypart {
 public:
  explicit Bodypart(Bodypart* parent = nullptr, bool in_arena = false);
  ~Bodypart();
  Bodypart(const Bodypart&) = delete;
  Bodypart& operator=(const Bodypart&) = delete;

  // As new again; only its place in the tree stays.
  void Clean();

  // Steps to the root.
  int Depth() const;

  // Its content type, with the defaults of RFC 2045 5.2 and RFC 2046 5.1.5. DECLARED: the field
  // Content-Type. SCRATCH may hold what is returned.
  ContentType Type(const FieldValue& declared, std::string& scratch) const;
  ContentType Type(std::string& scratch) const { return Type(Field("Content-Type"), scratch); }
  // For example TEXT/PLAIN.
  std::string TypeName() const;
  // Without SUB: whether it is of that kind.
  bool Is(std::string_view major, std::string_view sub = {}) const;

  // The first field of that name, analysed; of an empty text when there is none.
  FieldValue Field(std::string_view name) const;

  // BodypartFlag values.
  uint32_t Flags() const;

  void DetachFrom(const Minstream* stream);
  void AttachTo(Minstream* stream);

  // A subpart for the tree that is parsed into this part, which it must not outlive.
  BodypartPtr MakeSubpart(Bodypart* parent);
  Bodypart* AppendChild(BodypartPtr child);
  bool DeleteChild(const Bodypart* child);

  // The n-th embedded file, uuencoded ones first, counted from 1; null when there is none.
  const EmbeddedAttachment* Embedded(int32_t number) const;

 private:
  friend BodypartDeleter;

  uint32_t tag_ = kBodypartSignature;
  bool in_arena_ = false;

 public:
  DataDefinition DataDefinitionType = kNoBody;
  // A multipart, the rest of one, or a message whose structure was not looked into.
  bool Opaque = false;
  // Its place: in a multipart/digest, where a part that declares no type is a message. Noted here,
  // because asking the parent's header for each of its children would be quadratic.
  bool InDigest = false;
  Bodypart* Parent = nullptr;
  int64_t PartStart = 0;
  int64_t HeaderSize = 0;
  int64_t BodyStart = 0;    // -1: not known
  int64_t BodyLength = 0;   // -1: not known
  int64_t DecodedSize = 0;  // -1: not known
  Minstream* BodyStream = nullptr;
  std::string BodyFileName;
  const void* BodyMemory = nullptr;

  HeaderFields Header;
  InlineVector<BodypartPtr, 2> Children;
  BodypartPtr EnclosedMessage;
  std::string ContentTransferEncoding;
  std::string Charset;  // of what is no multipart
  std::vector<EmbeddedAttachment> UuencodedBlocks;
  std::vector<EmbeddedAttachment> TnefAttachments;

  // What a part that was loaded from memory owns: the copy of its text, and the stream over it.
  std::unique_ptr<std::string> OwnText;
  std::unique_ptr<Minstream> OwnStream;

 private:
  void ReleaseSubparts(Bodypart*& list);
  void DestroySubparts();

  std::unique_ptr<BodypartArena> arena_;  // of the parts that were parsed into this one
};

// Calls VISIT for the part and all below it, a part before its children. Needs no stack in
// proportion to the depth.
template <typename Part, typename Visit>
void WalkBodyparts(Part& root, Visit visit) {
  std::vector<Part*> pending{&root};
  while (!pending.empty()) {
    Part* part = pending.back();
    pending.pop_back();
    visit(*part);
    if (part->EnclosedMessage != nullptr) pending.push_back(part->EnclosedMessage.get());
    for (auto child = part->Children.rbegin(); child != part->Children.rend(); ++child) {
      pending.push_back(child->get());
    }
  }
}

}  // namespace mimora

#endif  // MIMORA_MIME_BODYPART_H_
