// Copyright (c) 2026 the mimora developers.
#include "mime/dump.h"

#include <cinttypes>
#include <string>
#include <vector>

namespace mimora {
namespace {

// Positions are shown as their low 32 bits.
std::string Number(int64_t value) { return std::to_string(static_cast<uint32_t>(value)); }

class Dump {
 public:
  explicit Dump(std::FILE* file) : file_(file) {}

  void WriteNull() {
    std::fputs("bodypart is NULL\n", file_);
    std::fflush(file_);
  }

  // A tree may be as deep as its maker liked: the way back up is kept here, not on the stack.
  void Write(const Bodypart& root) {
    Open(root);
    while (!open_.empty()) {
      const Bodypart& part = *open_.back().part;
      const size_t next = open_.back().next++;
      if (open_.back().multipart && next < part.Children.size()) {
        Line(part, "child bodypart " + std::to_string(next) + ":");
        Open(*part.Children[next]);
      } else if (open_.back().message && next == 0) {
        Line(part, "body=bodypart");
        if (part.EnclosedMessage != nullptr) {
          Open(*part.EnclosedMessage);
        } else {
          WriteNull();
        }
      } else {
        WriteEnd(part);
        open_.pop_back();
      }
    }
  }

 private:
  struct Level {
    const Bodypart* part;
    bool multipart;
    bool message;
    size_t next;  // which subpart comes next
  };

  void Open(const Bodypart& part) {
    std::string scratch;
    const ContentType type = part.Type(scratch);
    open_.push_back({&part, type.Is("multipart"), type.Is("message"), 0});
    WriteStart(part);
  }

  void Line(const Bodypart& part, const std::string& text) {
    const std::string line = std::string(2 * static_cast<size_t>(part.Depth()), ' ') + text + "\n";
    std::fwrite(line.data(), 1, line.size(), file_);
    std::fflush(file_);
  }

  void Rule(const Bodypart& part, const char* rule) {
    const std::string id(part.Header.Find("Content-ID").value_or(""));
    Line(part, "----[" + std::to_string(part.Depth()) + "] " + id + rule);
  }

  void Quoted(const Bodypart& part, const char* label, const char* field) {
    Line(part, label + (" = \"" + std::string(part.Header.Find(field).value_or("")) + "\""));
  }

  void WriteStart(const Bodypart& part) {
    Rule(part, "-----START-------------------------");
    Quoted(part, "content-type", "Content-type");
    Quoted(part, "content-transfer-encoding", "Content-transfer-encoding");
    Line(part, "header:");
    Line(part, "  offset = " + Number(part.PartStart));
    Line(part, "  size = " + Number(part.HeaderSize));
    Line(part, "  fields count = " + std::to_string(part.Header.Count()));
    Line(part, "body:");
    Line(part, "  offset = " + Number(part.BodyStart));
    Line(part, "  size = " + Number(part.BodyLength));
    if (open_.back().multipart) {
      Line(part, "child parts count = " + std::to_string(part.Children.size()));
    }
  }

  void WriteEnd(const Bodypart& part) {
    WriteFiles(part, "uupart ", part.UuencodedBlocks, true);
    WriteFiles(part, "tnefpart ", part.TnefAttachments, false);
    Rule(part, "-----END---------------------------");
  }

  void WriteFiles(const Bodypart& part, const char* label,
                  const std::vector<EmbeddedAttachment>& files, bool encoded) {
    size_t number = 0;
    for (const EmbeddedAttachment& file : files) {
      const int64_t size = encoded ? file.BlockLength : file.DecodedSize;
      std::string line = label + std::to_string(number++) + " name=" + file.Name +
                         ", offset =" + std::to_string(file.Offset) +
                         ", size =" + std::to_string(size);
      if (encoded) line += ", rawsize =" + std::to_string(file.DecodedSize);
      Line(part, line);
    }
  }

  std::FILE* file_;
  std::vector<Level> open_;
};

}  // namespace

void DumpBodypart(const Bodypart* part, std::FILE* file) {
  Dump dump(file);
  if (part == nullptr) return dump.WriteNull();
  dump.Write(*part);
}

}  // namespace mimora
