#include "hosts/report/system_sentence.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "hosts/report/backend_sentences.h"
#include "hosts/report/language.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

struct Sentence {
  int error;
  std::u16string_view german;
};
// What may go wrong with files. The English is the system's.
constexpr std::array<Sentence, 22> kSentences = {{
    {ENOENT, u"Datei oder Ordner nicht gefunden"},
    {EACCES, u"Keine Berechtigung"},
    {EPERM, u"Die Operation ist nicht erlaubt"},
    {EEXIST, u"Die Datei existiert bereits"},
    {ENOTDIR, u"Ist kein Ordner"},
    {EISDIR, u"Ist ein Ordner"},
    {ENOSPC, u"Auf dem Datenträger ist kein Platz mehr"},
    {EROFS, u"Das Dateisystem kann nur gelesen werden"},
    {EIO, u"Ein-/Ausgabefehler"},
    {ENAMETOOLONG, u"Der Dateiname ist zu lang"},
    {ELOOP, u"Zu viele Verweise folgen aufeinander"},
    {EMFILE, u"Zu viele Dateien sind geöffnet"},
    {ENFILE, u"Im System sind zu viele Dateien geöffnet"},
    {EBUSY, u"Wird gerade benutzt"},
    {ENODEV, u"Gerät nicht gefunden"},
    {ENXIO, u"Gerät oder Adresse nicht gefunden"},
    {EINVAL, u"Ungültiges Argument"},
    {EPIPE, u"Der Empfänger liest nicht mehr"},
    {EFBIG, u"Die Datei ist zu groß"},
    {ENOTEMPTY, u"Der Ordner ist nicht leer"},
    {ENOMEM, u"Der Arbeitsspeicher reicht nicht aus"},
    {EXDEV, u"Verweis über Gerätegrenzen"},
}};

std::string SystemWords(int error) {
  return std::generic_category().message(error);
}

// Whether the sentence is the pattern with something in the place of each "%s". Of several ways the
// first value is the shortest, so that a path ends at the first colon that fits.
bool Fits(std::string_view sentence, std::string_view pattern,
          std::vector<std::string_view>& values) {
  const std::size_t mark = pattern.find("%s");
  if (!sentence.starts_with(pattern.substr(0, mark))) return false;
  if (mark == std::string_view::npos) return sentence.size() == pattern.size();
  const std::string_view rest = pattern.substr(mark + 2);
  const std::string_view next = rest.substr(0, rest.find("%s"));
  sentence.remove_prefix(mark);
  for (std::size_t at = 1; at <= sentence.size(); ++at) {
    at = next.empty() ? sentence.size() : sentence.find(next, at);
    if (at == std::string_view::npos) return false;
    values.push_back(sentence.substr(0, at));
    if (Fits(sentence.substr(at), rest, values)) return true;
    values.pop_back();
  }
  return false;
}

// A value may be a sentence itself.
std::string Filled(std::string pattern, const std::vector<std::string_view>& values) {
  std::size_t at = 0;
  for (const std::string_view value : values) {
    const std::string text = InReportLanguage(value);
    at = pattern.find("%s", at);
    pattern.replace(at, 2, text);
    at += text.size();
  }
  return pattern;
}

std::string InGerman(const Sentence& sentence) {
  return ToUtf8(sentence.german);
}

}  // namespace

std::string SystemSentence(int error) {
  const auto* const known = std::ranges::find(kSentences, error, &Sentence::error);
  const bool translated = PackageLanguage() == TLanguage::German && known != kSentences.end();
  return translated ? InGerman(*known) : SystemWords(error);
}

std::string InReportLanguage(std::string_view sentence) {
  if (PackageLanguage() != TLanguage::German) return std::string(sentence);
  for (const TText& known : kBackendSentences) {
    std::vector<std::string_view> values;
    if (!Fits(sentence, ToUtf8(known.english), values)) continue;
    return Filled(ToUtf8(known.german), values);
  }
  for (const Sentence& known : kSentences) {
    const std::string words = ": " + SystemWords(known.error);
    if (!sentence.ends_with(words)) continue;
    sentence.remove_suffix(words.size() - 2);
    return std::string(sentence) + InGerman(known);
  }
  return std::string(sentence);
}

TStringList InReportLanguage(const TStringList& sentences) {
  TStringList out;
  for (const UnicodeString& sentence : sentences)
    out.push_back(FromUtf8(InReportLanguage(ToUtf8(sentence))));
  return out;
}

}  // namespace scrubwell::hosts
