#include "hosts/report/system_sentence.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

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
  for (const Sentence& known : kSentences) {
    const std::string words = ": " + SystemWords(known.error);
    if (!sentence.ends_with(words)) continue;
    sentence.remove_suffix(words.size() - 2);
    return std::string(sentence) + InGerman(known);
  }
  return std::string(sentence);
}

}  // namespace scrubwell::hosts
