#include "quorvel/platform/bundle.h"

#include <cstdlib>
#include <fstream>
#include <random>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>
#include <plist/plist.h>

#include "quorvel/platform/device_info.h"

namespace quorvel::platform {
namespace {

namespace fs = std::filesystem;

std::string infoPlist(const std::string& identifier, const std::string& extraEntries = "") {
  return R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
  <key>CFBundleIdentifier</key><string>)" +
         identifier + "</string>\n" + extraEntries + "</dict></plist>\n";
}

class BundleTest : public testing::Test {
 protected:
  void SetUp() override {
    root_ = fs::temp_directory_path() / ("bundle-test-" + std::to_string(std::random_device{}()));
    fs::create_directories(root_);
    Bundle::resetForTesting();
    setLanguages({"en-US"});
  }
  void TearDown() override {
    Bundle::resetForTesting();
    DeviceInfo::setOverride(std::nullopt);
    fs::remove_all(root_);
  }

  static void setLanguages(std::vector<std::string> languages) {
    DeviceInfo::setOverride(DeviceFacts{"test", "test", std::move(languages)});
  }
  void write(const fs::path& relative, const std::string& bytes) {
    const auto path = root_ / relative;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
  }

  // A host bundle with localized tables, resources and a strings sub-bundle.
  fs::path makeHostBundle() {
    write(
        "Host/Info.plist",
        infoPlist("com.example.host", "<key>CFBundleDevelopmentRegion</key><string>fr</string>\n"));
    write("Host/en.lproj/Localizable.strings", "\"hello\" = \"Hello\";\n\"bye\" = \"Bye\";");
    write("Host/de.lproj/Localizable.strings", "\"hello\" = \"Hallo\";");
    write("Host/de.lproj/Custom.strings", "\"custom\" = \"Eigen\";");
    write("Host/fr.lproj/Localizable.strings", "\"hello\" = \"Bonjour\";");
    write("Host/Base.lproj/Main.strings", "\"title\" = \"Base title\";");
    write("Host/pt-BR.lproj/Localizable.strings", "\"hello\" = \"Olá\";");
    write("Host/Shared.strings", "\"shared\" = \"Top level\";");
    write("Host/Broken.strings", "\"a\" = \"b\"\n");
    write("Host/style.css", "body{}");
    write("Host/b.png", "png");
    write("Host/a.png", "png");
    write("Host/README", "no extension");
    write("Host/images/icon.png", "png");
    write("Host/de.lproj/flag.png", "de");
    write("Host/DravikStrings.bundle/Info.plist", infoPlist("com.example.strings"));
    write("Host/DravikStrings.bundle/en.lproj/Localizable.strings", "\"lib\" = \"Library\";");
    return root_ / "Host";
  }

  fs::path root_;
};

TEST_F(BundleTest, InfoDictionaryFromXmlAndBinaryPropertyLists) {
  const auto xml = infoPlist("com.example.info", R"(
  <key>CFBundleDevelopmentRegion</key><string>de</string>
  <key>Count</key><integer>-3</integer>
  <key>Ratio</key><real>0.5</real>
  <key>Enabled</key><true/>
  <key>List</key><array><string>a</string><integer>2</integer></array>
  <key>Nested</key><dict><key>k</key><string>v</string></dict>
)");
  write("Xml.bundle/Info.plist", xml);
  // The same dictionary in the binary form.
  plist_t plist = nullptr;
  plist_from_xml(xml.data(), static_cast<uint32_t>(xml.size()), &plist);
  ASSERT_NE(plist, nullptr);
  char* binary = nullptr;
  uint32_t length = 0;
  plist_to_bin(plist, &binary, &length);
  write("Bin.bundle/Info.plist", std::string(binary, length));
  free(binary);
  plist_free(plist);

  const auto expected = boost::json::parse(R"({"CFBundleIdentifier":"com.example.info",
      "CFBundleDevelopmentRegion":"de","Count":-3,"Ratio":0.5,"Enabled":true,"List":["a",2],
      "Nested":{"k":"v"}})");
  for (const auto* name : {"Xml.bundle", "Bin.bundle"}) {
    const auto bundle = Bundle::atPath(root_ / name);
    ASSERT_NE(bundle, nullptr) << name;
    EXPECT_EQ(bundle->infoDictionary(), expected.as_object()) << name;
    EXPECT_EQ(bundle->identifier(), "com.example.info");
    EXPECT_EQ(bundle->developmentRegion(), "de");
    EXPECT_EQ(bundle->objectForInfoDictionaryKey("Count"), boost::json::value(-3));
    EXPECT_FALSE(bundle->objectForInfoDictionaryKey("Missing").has_value());
  }
}

TEST_F(BundleTest, BundlesAreSharedPerPathAndMissingDirectoriesGiveNone) {
  write("Plain/file.txt", "x");
  const auto bundle = Bundle::atPath(root_ / "Plain");
  ASSERT_NE(bundle, nullptr);
  EXPECT_EQ(Bundle::atPath(root_ / "Plain" / ".." / "Plain"), bundle);
  EXPECT_TRUE(bundle->infoDictionary().empty());  // no Info.plist is not an error
  EXPECT_FALSE(bundle->identifier().has_value());
  EXPECT_EQ(Bundle::atPath(root_ / "Missing"), nullptr);
  EXPECT_EQ(Bundle::atPath(root_ / "Plain" / "file.txt"), nullptr);
}

// Bundle::setMain: LocalizationTest.AHostOverrideComesBeforeTheLibrary.

TEST_F(BundleTest, ResourcesTopLevelLocalizedAndInSubdirectories) {
  const auto bundle = Bundle::atPath(makeHostBundle());
  setLanguages({"de-DE"});
  const struct {
    const char* name;
    const char* type;
    const char* subdirectory;
    std::optional<std::string> expected;  // relative to the bundle
  } cases[] = {
      {"style", "css", "", "style.css"},
      {"style", ".css", "", "style.css"},
      {"icon", "png", "images", "images/icon.png"},
      {"flag", "png", "", "de.lproj/flag.png"},
      {"README", "", "", "README"},
      {"DravikStrings", "", "", "DravikStrings.bundle"},
      {"DravikStrings", "bundle", "", "DravikStrings.bundle"},
      {"style", "js", "", std::nullopt},
      {"icon", "png", "", std::nullopt},
      {"", "png", "", std::nullopt},
  };
  for (const auto& c : cases) {
    const auto path = bundle->pathForResource(c.name, c.type, c.subdirectory);
    const auto expected =
        c.expected ? std::optional(bundle->bundlePath() / *c.expected) : std::optional<fs::path>();
    EXPECT_EQ(path, expected) << c.name << "." << c.type;
  }
  setLanguages({"en"});
  EXPECT_FALSE(bundle->pathForResource("flag", "png").has_value());

  const auto pngs = bundle->pathsForResources("png");
  ASSERT_EQ(pngs.size(), 2u);
  EXPECT_EQ(pngs[0].filename(), "a.png");
  EXPECT_EQ(pngs[1].filename(), "b.png");
}

TEST_F(BundleTest, SubBundlesAndLookupByIdentifier) {
  const auto host = Bundle::atPath(makeHostBundle());
  const auto path = host->pathForResource("DravikStrings", "bundle");
  ASSERT_TRUE(path.has_value());
  const auto strings = Bundle::atPath(*path);
  ASSERT_NE(strings, nullptr);
  EXPECT_EQ(host->childBundle("DravikStrings"), strings);
  EXPECT_EQ(strings->localizedString("lib"), "Library");
  EXPECT_EQ(host->childBundle("Nope"), nullptr);

  // Found among loaded bundles, then through the search paths.
  EXPECT_EQ(Bundle::withIdentifier("com.example.strings"), strings);
  write("Resources/Other.bundle/Info.plist", infoPlist("com.example.other"));
  write("Resources/Dravik.bundle/Info.plist", infoPlist("com.example.Dravik"));
  EXPECT_EQ(Bundle::withIdentifier("com.example.Dravik"), nullptr);
  Bundle::registerSearchPath(root_ / "Missing");
  Bundle::registerSearchPath(root_ / "Resources");
  const auto found = Bundle::withIdentifier("com.example.Dravik");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->bundlePath().filename(), "Dravik.bundle");
  EXPECT_EQ(Bundle::withIdentifier("com.example.Dravik"), found);
  EXPECT_EQ(Bundle::withIdentifier("com.example.none"), nullptr);
}

TEST_F(BundleTest, PreferredLocalizationsFollowTheUsersLanguages) {
  const auto bundle = Bundle::atPath(makeHostBundle());
  EXPECT_EQ(bundle->localizations(), (std::vector<std::string>{"Base", "de", "en", "fr", "pt-BR"}));
  const struct {
    std::vector<std::string> languages;
    std::vector<std::string> expected;
  } cases[] = {
      {{"de-CH"}, {"de", "fr", "en", "Base"}},                 // language only; then dev region
      {{"pt_br", "de"}, {"pt-BR", "de", "fr", "en", "Base"}},  // case and separator ignored
      {{"pt-PT"}, {"fr", "en", "Base"}},                       // no pt: region alone is no match
      {{"EN-gb", "fr"}, {"en", "fr", "Base"}},
      {{"ja"}, {"fr", "en", "Base"}},
  };
  for (const auto& c : cases) {
    setLanguages(c.languages);
    EXPECT_EQ(bundle->preferredLocalizations(), c.expected) << c.languages.front();
  }
}

TEST_F(BundleTest, LocalizedStringLookupOrderAndMissingKeys) {
  const auto bundle = Bundle::atPath(makeHostBundle());
  const struct {
    std::vector<std::string> languages;
    const char* key;
    const char* value;
    const char* table;
    const char* expected;
  } cases[] = {
      {{"de-AT"}, "hello", "", "Localizable", "Hallo"},
      {{"ja"}, "hello", "", "Localizable", "Bonjour"},  // development region
      {{"en-US"}, "hello", "", "", "Hello"},            // empty table name: Localizable
      {{"de"}, "bye", "", "Localizable", "bye"},        // the German table wins as a whole
      {{"de"}, "bye", "Fallback", "Localizable", "Fallback"},
      {{"de"}, "custom", "", "Custom", "Eigen"},
      {{"en"}, "custom", "", "Custom", "custom"},     // no English Custom table
      {{"en"}, "title", "", "Main", "Base title"},    // Base is the last resort
      {{"en"}, "shared", "", "Shared", "Top level"},  // top-level table
      {{"en"}, "a", "", "Broken", "a"},               // malformed table: none
      {{"en"}, "hello", "", "Missing", "hello"},
  };
  for (const auto& c : cases) {
    setLanguages(c.languages);
    EXPECT_EQ(bundle->localizedString(c.key, c.value, c.table), c.expected)
        << c.languages.front() << " " << c.table << " " << c.key;
  }
  setLanguages({"de"});
  EXPECT_EQ(bundle->stringsTable("Localizable"),
            (std::optional<Bundle::StringTable>{{{"hello", "Hallo"}}}));
  EXPECT_FALSE(bundle->stringsTable("Broken").has_value());
  EXPECT_EQ(bundle->stringsFiles(),
            (std::vector<std::string>{"Broken.strings", "Custom.strings", "Localizable.strings",
                                      "Shared.strings"}));
}

}  // namespace
}  // namespace quorvel::platform
