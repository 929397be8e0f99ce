// A strict reader of markup that is ours: tags must nest, attributes be quoted, names be known.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace scrubwell::test {

struct Markup {
  std::map<std::string, int> elements;
  std::vector<std::string> attributes;  ///< name="value"
  std::string error;                    ///< empty when it is well-formed

  explicit Markup(std::string_view text) { Read(text); }

 private:
  void Read(std::string_view text) {
    std::vector<std::string> open;
    for (std::size_t at = text.find('<'); at < text.size(); at = text.find('<', at)) {
      const bool isEnd = text[at + 1] == '/';
      std::size_t end = text.find_first_of(" >/\n", at + 1 + (isEnd ? 1 : 0));
      const std::string name(text.substr(at + 1 + isEnd, end - at - 1 - isEnd));
      if (name == "!DOCTYPE") {
        at = text.find('>', at);
        continue;
      }
      while (end < text.size() && text[end] != '>' && text[end] != '/') {
        const std::size_t stop = text.find_first_of("=> \n/", ++end);
        if (stop == std::string_view::npos || text[stop] != '=') continue;
        const std::size_t quote = text.find('"', stop + 2);
        if (text[stop + 1] != '"' || quote == std::string_view::npos) return Fail(name, at);
        attributes.emplace_back(text.substr(end, quote + 1 - end));
        end = quote + 1;
      }
      const bool isWhole = text[end] == '/';
      at = text.find('>', end);
      if (isEnd) {
        if (open.empty() || open.back() != name) return Fail("/" + name, at);
        open.pop_back();
        continue;
      }
      ++elements[name];
      if (isWhole || name == "meta" || name == "input") continue;
      open.push_back(name);
      if (name == "style" || name == "script") at = text.find("</" + name, at);
    }
    if (!open.empty()) error = "<" + open.back() + "> stays open";
  }
  void Fail(const std::string& name, std::size_t at) {
    error = "<" + name + "> at " + std::to_string(at);
  }
};

}  // namespace scrubwell::test
