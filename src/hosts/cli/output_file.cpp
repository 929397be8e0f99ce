#include "hosts/cli/output_file.h"

#include "hosts/cli/console.h"
#include "hosts/cli/replace_file.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/system_sentence.h"

namespace scrubwell::hosts {

namespace {

std::optional<std::string> Complaint(std::string_view path, int error) {
  if (error == 0) return std::nullopt;
  return Say(texts::CantWrite, {path, SystemSentence(error)});
}

}  // namespace

std::optional<std::string> CheckOutput(const std::string& path) {
  return path.empty() ? std::nullopt : Complaint(path, TryReplacing(path));
}

std::optional<std::string> WriteOutput(const std::string& path, std::string_view bytes) {
  return WriteOutput(path, ContentSource([bytes](const auto& put) { put(bytes); }));
}

std::optional<std::string> WriteOutput(const std::string& path, const ContentSource& content) {
  if (!path.empty()) return Complaint(path, ReplaceContent(path, content));
  int error = 0;
  content([&error](std::string_view piece) {
    if (error == 0) error = WriteTo(Stream::Output, piece);
  });
  return Complaint(Say(texts::StandardOutput), error);
}

}  // namespace scrubwell::hosts
