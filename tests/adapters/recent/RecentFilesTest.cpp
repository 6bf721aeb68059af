#include "adapters/harness/OtherProgram.h"
#include "base/async/ManualExecutor.h"
#include "fakes/TemporaryFolder.h"
#include "linux/recent/RecentFileList.h"
#include "linux/recent/RecentFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace dorix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string bookmark(const std::string& href, const std::string& modified, const std::string& visited,
                     const std::string& metadata = "") {
    return "<bookmark href='" + href + "' modified='" + modified + "' visited='" + visited +
           "'><info><metadata owner='x'>" + metadata + "</metadata></info></bookmark>";
}

std::string list(const std::string& bookmarks) {
    return "<?xml version='1.0'?><xbel version='1.0'>" + bookmarks + "</xbel>";
}

TEST(RecentFileListTest, GivesFilesOfThisComputerTheLastUsedFirst) {
    const auto contents =
        list(bookmark("file:///a/vieja.txt", "2026-01-01T10:00:00Z", "2026-01-01T10:00:00Z") +
             bookmark("file:///a/A%C3%B1o%20%26%20obra.odt", "2026-01-01T10:00:00Z", "2026-03-01T10:00:00Z") +
             bookmark("file:///a/secreta.txt", "2026-04-01T10:00:00Z", "", "<bookmark:private/>") +
             bookmark("smb://servidor/a/acta.pdf", "2026-05-01T10:00:00Z", "") +
             bookmark("file://otro/a/acta.pdf", "2026-05-01T10:00:00Z", "") +
             bookmark("file:///a/nueva.txt", "2026-02-01T10:00:00.123456Z", ""));
    EXPECT_THAT(parseRecentFiles(contents, 10),
                ElementsAre("/a/Año & obra.odt", "/a/nueva.txt", "/a/vieja.txt"));
    EXPECT_THAT(parseRecentFiles(contents, 2), SizeIs(2));
    std::string deep;
    for (int i = 0; i < 100'000; ++i) deep += "<bookmark>";
    for (const auto& broken :
         {std::string(), std::string("xbel"), std::string("<xbel><bookmark href='"),
          list("&a;<!DOCTYPE x [<!ENTITY a '&a;'>]>"), "<xbel>" + deep, std::string("\0\xFF<xbel>", 8)}) {
        EXPECT_THAT(parseRecentFiles(broken, 10), IsEmpty());
    }
}

TEST(RecentFileListTest, TakesTheFileOfATitleOnlyWhereItCanBeNoOther) {
    const std::vector<fs::path> files{
        "/home/ana/Documentos/Informe Q3.odt",
        "/home/ana/Q3.odt",
        "/home/ana/nota.txt",
        "/home/ana/obra/nota.txt",
        "/home/ana/obras/a.txt",
        "/home/ana/año.pdf",
        "/home/ana/Makefile",
        "/home/ana/v1.tar.gz",
        "/mnt/obra/plano.pdf",
    };
    const auto named = [&](std::string_view title) {
        return fileNamedIn(title, files, "/home/ana").value_or("").string();
    };
    EXPECT_EQ(named("Informe Q3.odt — LibreOffice Writer"), files[0]) << "not the one that it ends like";
    EXPECT_EQ(named("Nuevo Q3.odt — LibreOffice Writer"), "");
    EXPECT_EQ(named("*Q3.odt"), files[1]);
    EXPECT_EQ(named("nota.txt"), "") << "which of the two?";
    EXPECT_EQ(named("nota.txt (~/obra) - gedit"), files[3]);
    EXPECT_EQ(named("*~/nota.txt - Mousepad"), files[2]);
    EXPECT_EQ(named("nota.txt (~) - gedit"), files[2]);
    EXPECT_EQ(named("nota.txt - /home/ana/obra - Geany"), files[3]);
    EXPECT_EQ(named("a.txt (~/obra) - gedit"), "") << "a file of that name in another folder";
    EXPECT_EQ(named("~/obras/otras/a.txt - Mousepad"), "");
    EXPECT_EQ(named("/mnt/obra/plano.pdf"), files[8]);
    EXPECT_EQ(named("año.pdf — 3 / 20"), files[5]);
    for (const auto* other : {"xaño.pdf", "el-año.pdf", "año.pdf.bak", "año.pdfs", "año.pdf-1", "mi año.pdf",
                              "Makefile - gedit", "", "\xFF\xFE"}) {
        EXPECT_EQ(named(other), "") << other;
    }
    EXPECT_EQ(named("v1.tar.gz."), files[7]) << "the end of a sentence";
}

TEST(RecentFileListTest, ATitleMayBeThePath) {
    const auto file = [](std::string_view title) {
        return fileThatIs(title, "/home/ana").value_or("").string();
    };
    EXPECT_EQ(file("*/mnt/Informe año.pdf"), "/mnt/Informe año.pdf");
    EXPECT_EQ(file("~/nota.txt *"), "/home/ana/nota.txt");
    for (const auto* other : {"~/nota.txt - Editor", "/home/ana", "nota.txt", "~", "/", "", "/a.b/c",
                              "/mnt/v1.2", "/home/ana/.config"}) {
        EXPECT_EQ(file(other), "") << other;
    }
}

TEST(RecentFilesTest, FollowsTheFileThatTheDesktopKeeps) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "recently-used.xbel";
    ManualExecutor main;
    RecentFiles recent(main, file, folder.path());
    const auto soon = [&](const std::string& expected) {
        return eventually([&] {
            main.runPosted();
            return recent.namedIn("nota.txt — Editor").value_or("") == expected;
        });
    };
    const auto write = [&](const std::string& bookmarks) {
        std::ofstream(folder.path() / "new") << list(bookmarks);
        fs::rename(folder.path() / "new", file);
    };
    EXPECT_TRUE(soon(""));
    write(bookmark("file:///a/nota.txt", "2026-01-01T10:00:00Z", ""));
    EXPECT_TRUE(soon("/a/nota.txt"));
    write(bookmark("file:///b/nota.txt", "2026-01-01T10:00:00Z", ""));
    EXPECT_TRUE(soon("/b/nota.txt"));
    fs::remove(file);
    EXPECT_TRUE(soon("")) << "the user has had the desktop forget";
}

}  // namespace
}  // namespace dorix
