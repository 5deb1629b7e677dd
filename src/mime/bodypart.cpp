// Copyright (c) 2026 the mimora developers.
#include "mime/bodypart.h"

#include <algorithm>

#include "mime/bodypart_arena.h"
#include "platform/ascii.h"

namespace mimora {
namespace {

bool IsPkcs7(const ContentType& type) {
  return type.Is("application", "pkcs7-mime") || type.Is("application", "x-pkcs7-mime");
}

}  // namespace

void BodypartDeleter::operator()(Bodypart* part) const {
  if (part->in_arena_) {
    part->~Bodypart();
  } else {
    delete part;
  }
}

Bodypart::Bodypart(Bodypart* parent, bool in_arena) : in_arena_(in_arena), Parent(parent) {}

Bodypart::~Bodypart() {
  MIMORA_CHECK_TAG_IS_FIRST(Bodypart);
  DestroySubparts();
  // Volatile, or the compiler would drop a store into an object that ends here.
  static_cast<volatile uint32_t&>(tag_) = 0;
}

// Moves the subparts into a list that is linked through their parent references.
void Bodypart::ReleaseSubparts(Bodypart*& list) {
  const auto push = [&list](BodypartPtr& part) {
    if (part == nullptr) return;
    part->Parent = list;
    list = part.release();
  };
  for (auto& child : Children) push(child);
  push(EnclosedMessage);
  Children.clear();
}

// One by one: destroying a deep tree from its root would need a stack as deep.
void Bodypart::DestroySubparts() {
  Bodypart* pending = nullptr;
  BodypartArena arena;  // of the parts that were loaded on their own: theirs may still be pending
  ReleaseSubparts(pending);
  while (pending != nullptr) {
    const BodypartPtr part(pending);
    pending = part->Parent;
    part->ReleaseSubparts(pending);
    if (part->arena_ != nullptr) arena.TakeOver(*part->arena_);
  }
}

void Bodypart::Clean() {
  DestroySubparts();
  DataDefinitionType = kNoBody;
  Opaque = false;
  PartStart = HeaderSize = BodyStart = BodyLength = DecodedSize = 0;
  BodyStream = nullptr;
  BodyFileName.clear();
  BodyMemory = nullptr;
  Header.Clear();
  ContentTransferEncoding.clear();
  Charset.clear();
  UuencodedBlocks.clear();
  TnefAttachments.clear();
  OwnStream = nullptr;
  OwnText = nullptr;
  arena_ = nullptr;
}

int Bodypart::Depth() const {
  int depth = 0;
  for (const Bodypart* part = Parent; part != nullptr; part = part->Parent) ++depth;
  return depth;
}

FieldValue Bodypart::Field(std::string_view name) const {
  return FieldValue(Header.Find(name).value_or(""));
}

ContentType Bodypart::Type(const FieldValue& declared, std::string& scratch) const {
  if (const auto type = declared.Type(scratch)) return *type;
  // The rest of a multipart that has too many parts: it has no header of its own.
  if (Opaque) return {"application", "octet-stream"};
  if (InDigest && !Header.Find("Content-Type")) return {"message", "rfc822"};
  return {"text", "plain"};
}

std::string Bodypart::TypeName() const {
  std::string scratch;
  return Type(scratch).Full();
}

bool Bodypart::Is(std::string_view major, std::string_view sub) const {
  std::string scratch;
  return Type(scratch).Is(major, sub);
}

uint32_t Bodypart::Flags() const {
  uint32_t flags = 0;
  const auto receipt = Header.Find("Disposition-Notification-To");
  if (receipt && !std::all_of(receipt->begin(), receipt->end(), IsSpace)) {
    flags |= kReceiptRequested;
  }
  std::string scratch;
  const ContentType type = Type(scratch);
  if (IsPkcs7(type)) {
    flags |= kPkcs7;
    const auto kind = Field("Content-Type").Parameter("smime-type");
    if (kind && EqualIgnoringCase(*kind, "signed-data")) flags |= kSigned;
  }
  if (type.Is("multipart", "signed")) flags |= kSigned;
  return flags;
}

void Bodypart::DetachFrom(const Minstream* stream) {
  WalkBodyparts(*this, [stream](Bodypart& part) {
    if (part.DataDefinitionType != kBodyInStream || part.BodyStream != stream) return;
    part.DataDefinitionType = kBodyDetached;
    part.BodyStream = nullptr;
  });
}

void Bodypart::AttachTo(Minstream* stream) {
  WalkBodyparts(*this, [stream](Bodypart& part) {
    if (part.DataDefinitionType != kBodyDetached) return;
    part.DataDefinitionType = kBodyInStream;
    part.BodyStream = stream;
  });
}

BodypartPtr Bodypart::MakeSubpart(Bodypart* parent) {
  if (arena_ == nullptr) arena_ = std::make_unique<BodypartArena>();
  return arena_->Make(parent);
}

Bodypart* Bodypart::AppendChild(BodypartPtr child) {
  BodypartPtr& added = *Children.Add(1);
  added = std::move(child);
  return added.get();
}

bool Bodypart::DeleteChild(const Bodypart* child) {
  const auto found = std::find_if(Children.begin(), Children.end(),
                                  [child](const auto& part) { return part.get() == child; });
  if (found == Children.end()) return false;
  Children.Erase(static_cast<size_t>(found - Children.begin()));
  return true;
}

const EmbeddedAttachment* Bodypart::Embedded(int32_t number) const {
  if (number < 1) return nullptr;
  auto index = static_cast<size_t>(number) - 1;
  if (index < UuencodedBlocks.size()) return &UuencodedBlocks[index];
  index -= UuencodedBlocks.size();
  return index < TnefAttachments.size() ? &TnefAttachments[index] : nullptr;
}

}  // namespace mimora
