// A rescue from a real NTFS disk, from the mount to the backup set.
#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/dead_disk.h"

namespace {

// An NTFS file system in an image, mounted while this lives.
class NtfsDisk {
 public:
  NtfsDisk() {
    std::filesystem::create_directory(Mount());
    if (access("/dev/fuse", R_OK | W_OK) != 0) {
      reason = "/dev/fuse can't be opened";
      return;
    }
    const ProgramRun made = RunProgramOf("truncate -s 64M " + Image() + " && mkntfs -F -q -Q " + Image() +
                                         " && ntfs-3g " + Image() + " " + Mount());
    isMounted = made.code == 0;
    if (!isMounted) reason = made.output;
  }
  ~NtfsDisk() {
    if (!isMounted) return;
    const ProgramRun run = RunProgramOf("umount " + Mount());
    EXPECT_EQ(run.code, 0) << run.output;
  }
  std::string Mount() const { return place_.path + "/mount"; }

  bool isMounted = false;
  std::string reason;

 private:
  std::string Image() const { return place_.path + "/image"; }
  DiskFolder place_;
};

std::string Program(const std::string& name) {
  const auto self = std::filesystem::read_symlink("/proc/self/exe");
  return (self.parent_path().parent_path() / name).string();
}

// Would catch a layer that works on its own folders only: an NTFS driver has other attributes, times and
// errors than ext4.
TEST(AttachNtfs, BacksUpAMountedDisk) {
  NtfsDisk ntfs;
  if (!ntfs.isMounted) GTEST_SKIP() << "no NTFS disk can be mounted here: " << ntfs.reason;
  DeadDisk disk;
  disk.WriteSam();
  const std::string documents = ntfs.Mount() + "/Users/Anna/Documents/";
  ASSERT_EQ(RunProgramOf("cp -r " + disk.Folder() + "/. " + ntfs.Mount()).code, 0);
  PutBytes(documents + "Größe 日本.txt", "hello");
  PutBytes(documents + "hidden.txt", "seen by nobody");
  const char hidden[] = {0, 0, 0, 0x22};  // big endian
  ASSERT_EQ(setxattr((documents + "hidden.txt").c_str(), "system.ntfs_attrib_be", hidden, 4, 0), 0);
  const std::string before = StateOf(ntfs.Mount());

  DiskFolder target;
  const std::string rescue = target.path + "/rescue";
  std::filesystem::create_directory(target.path + "/usb");
  const ProgramRun attached = RunProgramOf(Program("norvane-machine") + " attach " + rescue +
                                           " C=" + ntfs.Mount() + " E=" + target.path + "/usb");
  ASSERT_EQ(attached.code, 0) << attached.output;
  EXPECT_NE(attached.output.find("Anna Berg"), std::string::npos) << attached.output;
  // The cloud account's profile isn't there, so it is named as left out.
  const ProgramRun saved =
      RunProgramOf(Program("norvanectl") + " --machine " + rescue +
                   " backup --to 'E:\\' --name Rescue --user 'Anna Ä' --folders documents");
  EXPECT_EQ(saved.code, 0) << saved.output;
  const std::string set = RunProgramOf("find " + target.path + "/usb -name '*.txt' -printf '%f|'").output;
  EXPECT_EQ(set, "Größe 日本.txt|");  // hidden files are left out unless they are asked for
  EXPECT_EQ(StateOf(ntfs.Mount()), before);
}

}  // namespace
