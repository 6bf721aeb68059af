#include "fakes/TemporaryFolder.h"
#include "linux/files/LinuxBackgroundWork.h"
#include "linux/files/LinuxFileTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/stat.h>

#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace dorix {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;
using Kind = FileTree::Kind;

std::vector<std::pair<std::string, Kind>> entriesOf(FileTree& tree, const std::string& folder) {
    std::vector<std::pair<std::string, Kind>> entries;
    tree.list(folder, [&](std::string_view name, Kind kind) { entries.emplace_back(name, kind); });
    return entries;
}

TEST(FileTreeTest, ListsWhateverIsThereAndFollowsNoLink) {
    const TemporaryFolder folder;
    const auto root = folder.path() / "root";
    fs::create_directories(root / "fol\nder");
    std::ofstream(root / "bad\xFF") << "x";
    fs::create_directory_symlink(root, root / "link");
    ASSERT_EQ(::mkfifo((root / "fifo").c_str(), S_IRUSR), 0);
    LinuxFileTree tree;
    EXPECT_THAT(entriesOf(tree, root.string()),
                UnorderedElementsAre(Pair("fol\nder", Kind::folder), Pair("bad\xFF", Kind::file),
                                     Pair("link", Kind::other), Pair("fifo", Kind::other)));
    EXPECT_THAT(entriesOf(tree, (root / "link").string()), IsEmpty());
    EXPECT_EQ(entriesOf(tree, (root / "link/.").string()).size(), 4) << "said so, it is followed";
    EXPECT_THAT(entriesOf(tree, (root / "fifo").string()), IsEmpty());
    EXPECT_THAT(entriesOf(tree, (root / "gone").string()), IsEmpty());
}

TEST(FileTreeTest, KnowsTheMountsOfOtherComputers) {
    const TemporaryFolder folder;
    const auto table = folder.path() / "mountinfo";
    std::ofstream(table) << "22 27 0:21 / /proc rw,relatime - proc proc rw\n"
                            "27 1 254:0 / / rw,relatime shared:1 master:2 - ext4 /dev/vda rw\n"
                            "40 27 0:50 / /home/ana/la\\040nube rw - fuse.sshfs ana@server: rw\n"
                            "41 27 0:51 / /home/ana/nas rw shared:7 - nfs4 nas:/ rw\n"
                            "42 27 0:52 / /home/ana/bóveda rw - fuse.gocryptfs /home/ana/.b rw\n"
                            "43 27 0:53 / /home/ana/usb rw - fuseblk /dev/sdb1 rw\n"
                            "44 27 0:54 / /home/ana/ftp rw - fuse curlftpfs rw\n"
                            "a broken line - nfs\n";
    EXPECT_THAT(LinuxFileTree(table).networkMounts(),
                ElementsAre("/home/ana/la nube", "/home/ana/nas", "/home/ana/ftp"));
    EXPECT_THAT(LinuxFileTree(folder.path() / "gone").networkMounts(), IsEmpty());
}

TEST(BackgroundWorkTest, MakesOneThreadIdleAlone) {
    LinuxBackgroundWork work;
    int policy = -1;
    std::thread([&] {
        work.makeThreadIdle();
        policy = ::sched_getscheduler(0);
    }).join();
    EXPECT_EQ(policy, SCHED_IDLE);
    EXPECT_EQ(::sched_getscheduler(0), SCHED_OTHER);
}

TEST(BackgroundWorkTest, CountsTheBatteriesThatTheComputerRunsOn) {
    const TemporaryFolder folder;
    const auto supply = [&](const std::string& name, const std::string& type, const std::string& status,
                            const std::string& capacity, const std::string& scope) {
        fs::create_directories(folder.path() / name);
        std::ofstream(folder.path() / name / "type") << type << "\n";
        if (!status.empty()) std::ofstream(folder.path() / name / "status") << status << "\n";
        if (!capacity.empty()) std::ofstream(folder.path() / name / "capacity") << capacity << "\n";
        if (!scope.empty()) std::ofstream(folder.path() / name / "scope") << scope << "\n";
    };
    LinuxBackgroundWork work(folder.path());
    EXPECT_EQ(work.batteryLeft(), std::nullopt);
    supply("AC", "Mains", "", "", "");
    supply("mouse", "Battery", "Discharging", "3", "Device");
    supply("BAT0", "Battery", "Charging", "10", "");
    EXPECT_EQ(work.batteryLeft(), std::nullopt);
    supply("BAT0", "Battery", "Discharging", "10", "");
    EXPECT_EQ(work.batteryLeft(), 0.1);
    supply("BAT1", "Battery", "Unknown", "60", "System");
    EXPECT_EQ(work.batteryLeft(), 0.35);
    EXPECT_EQ(LinuxBackgroundWork(folder.path() / "gone").batteryLeft(), std::nullopt);
}

}  // namespace
}  // namespace dorix
