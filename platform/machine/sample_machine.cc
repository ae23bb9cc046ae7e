#include "machine/sample_machine.h"

#include <filesystem>

#include "machine/create_machine.h"
#include "machine/sample_tree.h"

namespace machine {
namespace {

constexpr uint32_t kReadOnly = 1, kHidden = 2, kSystem = 4;
constexpr uint64_t kKiB = 1024, kMiB = 1024 * 1024;

MachinePlan SamplePlan() {
  MachinePlan plan;
  plan.computerName = "SAMPLE-PC";
  plan.major = 10;
  plan.build = 22631;
  plan.moreDrives = "D";
  plan.consoleAccount = "Anna";
  plan.timeZone = "Europe/Berlin";
  plan.seed = 20240229;
  AccountPlan anna, bob, eve;
  anna.name = "Anna";
  anna.type = AccountType::kAdministrator;
  anna.fullName = "Anna Berg";
  bob.name = "Bob";
  bob.fullName = "Bob Okafor";
  bob.folders["Personal"] = "D:\\Bob\\Documents";
  eve.name = "Eve";
  eve.type = AccountType::kGuest;
  eve.fullName = "Eve Müller";
  plan.accounts = {anna, bob, eve};
  return plan;
}

// Most files of a person are small, and a few hold most of the bytes.
uint64_t SizeOf(const std::string& path) {
  const uint64_t number = SampleNumber(path + "|size");
  const uint64_t kind = number % 100, fraction = number >> 32;
  if (kind < 4) return 0;
  if (kind < 70) return 1 + fraction % (16 * kKiB);
  if (kind < 96) return 16 * kKiB + fraction % (96 * kKiB);
  return 128 * kKiB + fraction % (512 * kKiB);
}

// `count` files below `folder`, spread over subfolders.
void Fill(SampleTree& tree, const std::string& folder, const std::string& stem, const std::string& extension,
          int count) {
  for (int i = 0; i < count; ++i) {
    std::string path = folder;
    if (i % 5 != 0) path += "\\" + stem + " " + std::to_string(2015 + i % 9);
    if (i % 7 == 3) path += "\\Part " + std::to_string(i % 4 + 1);
    path += "\\" + stem + " " + std::to_string(i + 1) + extension;
    tree.File(path, SizeOf(path));
  }
}

void FillDocuments(SampleTree& tree, const std::string& documents) {
  Fill(tree, documents, "Letter", ".docx", 180);
  Fill(tree, documents + "\\Taxes", "Receipt", ".pdf", 160);
  tree.Text(documents + "\\desktop.ini", "[.ShellClassInfo]\r\n", kHidden | kSystem);
  tree.File(documents + "\\Contract (final).docx", 48 * kKiB, kReadOnly);
  tree.File(documents + "\\.hidden notes", 700, kHidden);
  tree.Text(documents + "\\empty.txt", "");
  tree.Folder(documents + "\\An empty folder");
  tree.Folder(documents + "\\Private", kHidden);
  tree.File(documents + "\\Private\\diary.txt", 9 * kKiB, kHidden | kReadOnly);
}

void FillPictures(SampleTree& tree, const std::string& profile) {
  Fill(tree, profile + "\\Pictures", "Holiday", ".jpg", 220);
  tree.File(profile + "\\Pictures\\Thumbs.db", 60 * kKiB, kHidden | kSystem);
  Fill(tree, profile + "\\Music", "Track", ".mp3", 120);
  tree.File(profile + "\\Videos\\Wedding.mp4", 14 * kMiB);
}

void FillApplicationData(SampleTree& tree, const std::string& profile) {
  const std::string roaming = profile + "\\AppData\\Roaming", local = profile + "\\AppData\\Local";
  Fill(tree, roaming + "\\Mail Reader", "profile", ".dat", 110);
  Fill(tree, local + "\\Browser\\Cache", "entry", "", 180);
  tree.Text(roaming + "\\Mail Reader\\settings.ini", "[General]\r\nTheme=dark\r\n");
  tree.File(local + "\\Temp\\installer.log", 30 * kKiB);
  tree.File(profile + "\\AppData\\LocalLow\\Games\\save.dat", 4 * kKiB);
  // Windows has this one itself: it leads back to its own folder.
  tree.Junction(local + "\\Application Data", local);
}

// Names that a program which thinks in one script or in short paths would stumble over.
void FillNames(SampleTree& tree, const std::string& folder) {
  const char* const names[] = {"Überweisung – März.txt",
                               "Ελληνικά.txt",
                               "Русский документ.txt",
                               "עברית.txt",
                               "العربية.txt",
                               "简体中文.txt",
                               "日本語の書類.txt",
                               "한국어.txt",
                               "ไทย.txt",
                               "हिन्दी.txt",
                               "Tiếng Việt.txt",
                               "emoji 🎉🧾.txt",
                               "e\u0301 combined.txt",
                               "semi;colon.txt",
                               "equals=sign.txt",
                               "[brackets].txt",
                               "100 % sure.txt",
                               " leading blank.txt",
                               "#hash & more.txt",
                               "İstanbul ıssız.txt"};
  for (const char* name : names) tree.File(folder + "\\" + name, 900 + SampleNumber(name) % 3000);
  std::string deep = folder;
  for (int i = 1; i <= 9; ++i) deep += "\\A folder with a rather long name, number " + std::to_string(i);
  tree.File(deep + "\\below more than 260 characters.txt", 2 * kKiB);
  tree.File(deep + "\\" + std::string(200, 'n') + ".txt", 3 * kKiB, kReadOnly);
}

void FillProjects(SampleTree& tree) {
  Fill(tree, "D:\\Projects\\Bridge", "drawing", ".dwg", 240);
  Fill(tree, "D:\\Projects\\Website", "page", ".html", 320);
  tree.File("D:\\Projects\\Bridge\\model.bin", 22 * kMiB);
  tree.Text("D:\\Projects\\readme.txt", "What is still to be done is in the folders.\r\n");
}

}  // namespace

bool MakeSampleMachine(const std::string& folder, SampleSummary& summary, std::string* error) {
  if (!CreateMachine(folder, SamplePlan(), error)) return false;
  SampleTree tree(std::filesystem::canonical(folder).string());
  const std::string anna = "C:\\Users\\Anna", bob = "C:\\Users\\Bob", eve = "C:\\Users\\Eve";
  FillDocuments(tree, anna + "\\Documents");
  FillNames(tree, anna + "\\Documents\\Names");
  FillPictures(tree, anna);
  FillApplicationData(tree, anna);
  Fill(tree, anna + "\\Desktop", "Note", ".txt", 25);
  Fill(tree, anna + "\\Downloads", "setup", ".zip", 60);
  tree.File(anna + "\\Downloads\\image.iso", 18 * kMiB);
  Fill(tree, anna + "\\Saved Games\\Chess", "game", ".sav", 30);
  Fill(tree, anna + "\\Recipes", "Recipe", ".md", 70);
  tree.Junction(anna + "\\Documents\\My Music", anna + "\\Music");

  FillDocuments(tree, "D:\\Bob\\Documents");
  FillPictures(tree, bob);
  FillApplicationData(tree, bob);
  Fill(tree, bob + "\\Desktop", "Plan", ".xlsx", 40);

  Fill(tree, eve + "\\Documents", "Page", ".odt", 40);
  Fill(tree, eve + "\\Pictures", "Photo", ".png", 40);
  tree.File(eve + "\\Desktop\\Boarding pass.pdf", 120 * kKiB, kReadOnly);
  FillProjects(tree);
  if (!tree.Finish(error)) return false;
  summary = {tree.Files(), tree.Bytes()};
  return true;
}

}  // namespace machine
