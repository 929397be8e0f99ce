#include "hosts/report/image_catalogue.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "hosts/report/problem_kinds.h"
#include "markup.h"
#include "registry/Stringhelper.h"
#include "registry/Zmgraphics.h"
#include "report_world.h"

namespace scrubwell::hosts {
namespace {

TEST(Package, EveryKindHasItsIconAndItsTextsAndNothingElseHas) {
  ReportWorld world;
  std::set<UnicodeString> named;
  std::size_t kinds = 0;
  for (const TRCPlugin* plugin : *Plugins) {
    EXPECT_NE(FindIcon(plugin->IconFileName), nullptr) << ToUtf8(plugin->FPluginID);
    named.insert(plugin->IconFileName);
    for (const TProblemKind& kind : plugin->Kinds()) {
      const UnicodeString file = FileNameByID(kind.iconID, PluginGraphics);
      EXPECT_NE(FindIcon(file), nullptr) << kind.iconID;
      named.insert(file);
      EXPECT_NE(FindKind(plugin->FPluginID, kind.kind), nullptr) << ToUtf8(plugin->FPluginID);
      ++kinds;
    }
  }
  for (const Icon& icon : AllIcons()) {
    EXPECT_TRUE(named.contains(IntToStr(icon.number) + u".svg")) << icon.number << " is unused";
  }
  EXPECT_EQ(AllKinds().size(), kinds);
  const auto taxa = AllTechniques();
  for (const ProblemKind& kind : AllKinds()) {
    EXPECT_TRUE(kind.technique.empty() ||
                std::ranges::find(taxa, kind.technique, &Technique::id) != taxa.end());
  }
}

TEST(ImageCatalogue, NamesNothingElse) {
  ImageCatalogue images;
  EXPECT_EQ(images.FileName(7002, PluginGraphics), u"7002.svg");
  EXPECT_EQ(images.FileName(7002, 1), u"");
  EXPECT_EQ(images.FileName(7003, PluginGraphics), u"");
  for (const UnicodeView name : {u"", u".svg", u"7002", u"7002.svg.svg", u"../7002.svg",
                                 u"99999999999999999999.svg", u"-1.svg"}) {
    EXPECT_EQ(FindIcon(name), nullptr) << ToUtf8(name);
  }
}

TEST(ImageCatalogue, TheIconsAreTheFilesAndDrawLinesOnly) {
  const std::set<std::string> elements = {"svg", "path", "g", "clipPath"};
  std::set<std::string> drawings;
  const std::filesystem::path folder = SCRUBWELL_SOURCE_DIR "/icons";
  for (const Icon& icon : AllIcons()) {
    const std::string number = std::to_string(icon.number);
    std::ifstream file(folder / (number + ".svg"));
    std::ostringstream content;
    content << file.rdbuf();
    EXPECT_EQ(content.str(), std::string(icon.svg) + "\n") << number;

    const test::Markup markup(icon.svg);
    EXPECT_EQ(markup.error, "") << number;
    for (const auto& [name, count] : markup.elements) EXPECT_TRUE(elements.contains(name)) << name;
    std::string drawing;
    for (const std::string& attribute : markup.attributes) {
      if (attribute.starts_with("d=")) drawing += attribute;
      EXPECT_FALSE(attribute.starts_with("on") || attribute.find("href") != std::string::npos);
      const bool isAddress =
          attribute.find(':') != std::string::npos || attribute.find("url") != std::string::npos;
      EXPECT_TRUE(!isAddress || attribute == "xmlns=\"http://www.w3.org/2000/svg\"" ||
                  attribute == "clip-path=\"url(#room" + number + ")\"")
          << attribute;
    }
    EXPECT_NE(icon.svg.find("stroke=\"currentColor\""), std::string_view::npos) << number;
    EXPECT_TRUE(drawings.insert(drawing).second) << number << " looks like another one";
  }
}

}  // namespace
}  // namespace scrubwell::hosts
