#include "host/instrument/PresetLibrary.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <fstream>

#include "host/instrument/WholeFile.h"
#include "instrument/InstrumentRig.h"

namespace Quorvan::Host {
namespace {

namespace fs = std::filesystem;

struct TestFolder {
    fs::path path;
    TestFolder() {
        std::string name = (fs::temp_directory_path() / "library-XXXXXX").string();
        path = fs::path(mkdtemp(name.data())) / "presets";
    }
    ~TestFolder() { fs::remove_all(path.parent_path()); }
};

constexpr FactoryPreset kFactory[]{
    {"one", R"({"format":"tesserae-preset","version":1,"name":"One","tags":["pad"]})"},
    {"two", R"({"format":"tesserae-preset","version":1,"name":"Two","description":"Long tails"})"}};

TEST(PresetLibraryTest, PresetsAreSavedFoundRenamedAndThrownIntoTheTrash) {
    const TestFolder folder;
    PresetLibrary library(Catalog(), kFactory, folder.path);
    ASSERT_EQ(library.Entries().size(), 2u);
    Preset mine = ReadyInstrument::Sound("MoteWeaver_Pitch=5 st;");
    mine.name = "My / \"pad\"";
    mine.tags = {"pad"};
    EXPECT_EQ(library.Save(mine), "");
    EXPECT_NE(library.Save(mine), "");
    EXPECT_EQ(library.Save(mine, true), "");
    // Another name that would go into the same file.
    Preset other = mine;
    other.name = "My ? \"pad\"";
    EXPECT_NE(library.Save(other, true), "");
    // A trash that can't be had: nothing is lost.
    fs::rename(folder.path / "trash", folder.path / "away");
    std::ofstream(folder.path / "trash") << "";
    EXPECT_NE(library.Save(mine, true), "");
    fs::remove(folder.path / "trash");
    fs::rename(folder.path / "away", folder.path / "trash");
    // A disk that is full when the new file is half written: likewise.
    signal(SIGXFSZ, SIG_IGN);
    const rlimit full{fs::file_size(folder.path / "My - -pad-.json"), RLIM_INFINITY};
    rlimit before{};
    ASSERT_TRUE(getrlimit(RLIMIT_FSIZE, &before) == 0 && setrlimit(RLIMIT_FSIZE, &full) == 0);
    Preset longer = mine;
    longer.description = "Longer";
    EXPECT_NE(library.Save(longer, true), "");
    setrlimit(RLIMIT_FSIZE, &before);
    ASSERT_TRUE(library.Find(mine.name));
    EXPECT_EQ(library.Entries()[*library.Find(mine.name)].description, "");
    const auto found = library.Search("MY", std::vector<std::string>{"pad"});
    ASSERT_EQ(found.size(), 1u);
    ReadyInstrument saved, loaded;
    saved.LoadPreset(mine);
    loaded.LoadPreset(*library.Load(found[0]).value);
    EXPECT_EQ(loaded.GetPreset(), saved.GetPreset());
    EXPECT_EQ(library.Search("tails two").size(), 1u);
    EXPECT_EQ(library.Beside("Two", 1), found[0]);
    EXPECT_EQ(library.Beside(mine.name, 1), 0u);
    EXPECT_EQ(library.Beside("One", -1), found[0]);

    EXPECT_EQ(library.SetFavourite(found[0], true), "");
    EXPECT_EQ(library.SetSetList({"Two", mine.name}), "");
    EXPECT_EQ(library.Rename(found[0], "My - \"pad\""), "");
    ASSERT_EQ(library.Entries()[found[0]].name, "My - \"pad\"");
    EXPECT_EQ(library.Rename(found[0], "Renamed"), "");
    PresetLibrary again(Catalog(), kFactory, folder.path);
    EXPECT_EQ(again.Entries().size(), 3u);
    EXPECT_EQ(again.SetList(), (std::vector<std::string>{"Two", "Renamed"}));
    const auto renamed = again.Find("renamed");
    ASSERT_TRUE(renamed);
    EXPECT_TRUE(again.Entries()[*renamed].favourite);
    EXPECT_NE(again.Delete(0), "");
    EXPECT_EQ(again.Delete(*renamed), "");
    EXPECT_EQ(again.Save(ReadyInstrument::Sound("")), "");
    mine.name = "Renamed";
    EXPECT_EQ(again.Save(mine), "");
    EXPECT_FALSE(again.Entries()[*again.Find("Renamed")].favourite);
    EXPECT_EQ(again.Delete(*again.Find("Renamed")), "");
    EXPECT_EQ(again.Delete(*again.Find("Test")), "");
    EXPECT_EQ(again.Entries().size(), 2u);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path / "trash"), {}), 4);
}

TEST(PresetLibraryTest, PresetsOfOneNameAreWalkedOneByOne) {
    const TestFolder folder;
    WriteWholeFile(folder.path / "a.json", kFactory[1].json);
    WriteWholeFile(folder.path / "b.json", kFactory[1].json);
    PresetLibrary library(Catalog(), kFactory, folder.path);
    std::string name = "One";
    for (const size_t next : {1u, 2u, 3u, 0u}) {
        EXPECT_EQ(library.Beside(name, 1), next);
        name = library.Load(next).value->name;
    }
}

TEST(PresetLibraryTest, BrokenFilesAreListedWithTheirSentence) {
    const TestFolder folder;
    fs::create_directories(folder.path / "a folder.json");
    std::ofstream(folder.path / "broken.json") << "{\"format\": \"tesserae-preset\", ";
    std::ofstream(folder.path / "favourites.json") << "[";
    PresetLibrary library(Catalog(), kFactory, folder.path);
    // File names that are no UTF-8, too long for the trash, or would be cut within a letter.
    Preset longName;
    longName.name = "x\xc3\xa9\xc3\xa9";
    while (longName.name.size() < 200)
        longName.name += longName.name.substr(1);
    for (const std::string& stem : {std::string("caf\xe9"), std::string(245, 'x'), std::string()}) {
        EXPECT_EQ(stem.empty() ? library.Save(longName)
                               : WriteWholeFile(folder.path / (stem + ".json"), "{}"),
                  "");
        library.Scan();
        EXPECT_EQ(library.Entries().back().file.string().find("\xc3.json"), std::string::npos);
        EXPECT_EQ(library.Delete(library.Entries().size() - 1), "");
    }
    const auto broken = library.Find("broken");
    ASSERT_TRUE(broken);
    EXPECT_NE(library.Entries()[*broken].broken, "");
    EXPECT_FALSE(library.Load(*broken).value);
    EXPECT_EQ(library.Beside("Two", 1), 0u);
    PresetLibrary nowhere(Catalog(), kFactory, "/proc/no/such/folder");
    EXPECT_EQ(nowhere.Entries().size(), 2u);
    EXPECT_NE(nowhere.Save(ReadyInstrument::Sound("")), "");
}

}  // namespace
}  // namespace Quorvan::Host
