// What reports say of a kind of problem beside the plugin's own texts.
#pragma once

#include <span>

#include "texts/text.h"

namespace scrubwell::hosts {

enum class Weight : std::uint8_t {
  Note,     ///< a leftover
  Warning,  ///< Windows looks for it by itself, at every start: whoever puts a file there is run
};

struct ProblemKind {
  UnicodeView plugin;
  std::int32_t kind = 0;
  /// The ATT&CK technique that uses entries of this sort; empty where none does.
  std::string_view technique;
  Weight weight = Weight::Note;
  TText title;  ///< a few words, without any data
};

/// Every kind that a plugin names.
std::span<const ProblemKind> AllKinds();
/// Null when it is not known.
const ProblemKind* FindKind(UnicodeView plugin, std::int32_t kind);

struct Technique {
  std::string_view id;
  std::string_view name;
};
/// The techniques that kinds name, ascending.
std::span<const Technique> AllTechniques();

}  // namespace scrubwell::hosts
