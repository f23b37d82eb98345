// What opening a large project costs: CDBDoc::OpenProject and CloseProject of a multi-user
// file whose loaded tables hold 100,000 records, against reading the same file once.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "bench/bench_project.h"
#include "bench/ratio_reporter.h"
#include "bench/read_file.h"
#include "bench/setup_checks.h"
#include "bench/silent_ui.h"
#include "people/test_config.h"
#include "people/user.h"
#include "people/user_group.h"
#include "session/db_doc.h"
#include "session/value_item.h"
#include "shell/project_item_kinds.h"
#include "store/store_error.h"
#include "support/quiet_host.h"
#include "support/temp_dir.h"

namespace qm {
namespace {

using bench::Check;

// The 100,000 records: the people of a product with a large customer base (staff who log
// in, customers who report), the machines its testers keep, and its components.
constexpr std::uint32_t kStaff = 1'000;
constexpr std::uint32_t kCustomers = 67'000;
constexpr std::uint32_t kConfigurations = 30'000;
constexpr std::uint32_t kComponents = 2'000;
constexpr std::uint32_t kRecords = kStaff + kCustomers + kConfigurations + kComponents;
static_assert(kRecords == 100'000);

constexpr const char* kOpenName = "open_project";
constexpr const char* kReadName = "read_file";

// ---- the records ----

constexpr std::string_view kFirstNames[] = {
    "Anna",  "Bernard", "Carla",  "Dmitri", "Elena",  "Farid", "Greta",  "Hiro",
    "Ines",  "Jonas",   "Katrin", "Luis",   "Marta",  "Nils",  "Olga",   "Pavel",
    "Quinn", "Rosa",    "Samuel", "Tereza", "Ulrich", "Vera",  "Walter", "Xenia",
    "Yusuf", "Zofia",   "Amir",   "Brigit", "Colm",   "Dagny", "Emil",   "Fiona"};
constexpr std::string_view kLastNames[] = {
    "Abernathy", "Brandt",    "Castellano", "Dvorak",    "Eriksen",   "Fontaine", "Gallagher",
    "Horvath",   "Ibarra",    "Jankowski",  "Kowalczyk", "Lindqvist", "Moreau",   "Nakamura",
    "Oyelaran",  "Petrov",    "Quiroga",    "Rasmussen", "Santoro",   "Thibault", "Umarov",
    "Valente",   "Whitfield", "Yamada",     "Zeller",    "Okafor",    "Brennan",  "Haddad"};
constexpr std::string_view kCompanies[] = {"Northwind Surveying",      "Harbor Freight Lines",
                                           "Kestrel Dental Group",     "Ostrava Tooling",
                                           "Bluefield County Schools", "Marlow & Pike LLP",
                                           "Tidewater Credit Union",   "Granite Peak Outfitters"};
constexpr std::string_view kStreets[] = {"Elm Street",  "Harbor Road", "Mill Lane",
                                         "Station Way", "Church Road", "Lakeview Drive"};
constexpr std::string_view kCities[] = {"Portland, OR 97205",  "Columbus, OH 43215",
                                        "Leeds LS1 4DY",       "Brno 602 00",
                                        "Halifax, NS B3J 1S9", "Austin, TX 78701"};
constexpr std::string_view kNoteSentences[] = {
    "Prefers to be reached by phone in the morning, Pacific time. ",
    "Reported the printing problem in the 2.1 release and helped us reproduce it. ",
    "Runs the software on a shared network drive with about twenty other seats. ",
    "Beta site since the first public preview; sends detailed, reliable reports. ",
    "Asked to be told when the export to spreadsheets is fixed. ",
    "Upgraded from the single-user edition last spring; license number on file. ",
    "Has a slow dial-up link, so attachments should be kept small. ",
    "Contact for the whole site; forward anything from their office to this person. ",
    "Works nights; mail is read at the end of the shift, not during it. ",
    "Mentioned a crash when opening very old project files; could not send the file. "};
constexpr std::string_view kBrands[] = {"Compaq", "Dell",    "Gateway", "IBM",
                                        "Micron", "Toshiba", "NEC",     "Acer"};
constexpr std::string_view kModels[] = {"Deskpro 4000", "OptiPlex GXi",  "P5-166",
                                        "Aptiva E56",   "Millennia XKU", "Satellite 110CS",
                                        "PowerMate V",  "AcerPower 8000"};
constexpr std::string_view kSystems[] = {"Windows 95", "Windows NT Workstation",
                                         "Windows NT Server", "Windows 3.11", "OS/2 Warp"};
constexpr std::string_view kSystemVersions[] = {"4.00.950", "4.0 SP3", "4.0 SP1", "3.11",
                                                "4.00.950 B"};
constexpr std::string_view kCpus[] = {"Pentium", "Pentium Pro", "Pentium MMX", "486DX2", "K6"};
constexpr std::string_view kSpeeds[] = {"66", "100", "133", "166", "200", "233"};
constexpr std::string_view kRam[] = {"8", "16", "32", "64", "128"};
constexpr std::string_view kVideo[] = {"S3 Trio64", "Matrox Millennium", "ATI Rage Pro",
                                       "Cirrus Logic 5446", "Number Nine Imagine"};
constexpr std::string_view kDisks[] = {"IDE", "EIDE", "SCSI-2", "Ultra SCSI"};
constexpr std::string_view kDiskSizes[] = {"540 MB", "1.2 GB", "2.1 GB", "3.2 GB", "4.3 GB"};
constexpr std::string_view kPrinters[] = {"HP LaserJet 5", "Epson Stylus 800", "Canon BJC-4100",
                                          "Lexmark Optra R"};
constexpr std::string_view kOther[] = {
    "Sound Blaster 16, 3Com EtherLink III on the office network, Iomega Zip drive",
    "Adaptec 2940 SCSI controller, tape backup, second network card for the lab segment",
    "Token Ring adapter, no sound card, 17-inch monitor at 1024x768",
    "PCMCIA modem and network card, docking station with a second display"};
constexpr std::string_view kComponentWords[] = {
    "Editor",  "Printing", "Import",      "Export",   "Reports",  "Setup",  "Help",    "Mail",
    "Filters", "Toolbar",  "Preferences", "Security", "Spelling", "Charts", "Network", "Licensing"};

// A fixed seed: every run builds the same file, and records come in no particular order of
// name, as people and machines do when they are added over years.
class Source {
 public:
  template <std::size_t N>
  std::string_view Pick(const std::string_view (&words)[N]) {
    return words[Below(N)];
  }
  std::size_t Below(std::size_t n) { return static_cast<std::size_t>(rng_() % n); }
  std::string Number(std::size_t digits) {
    std::string text;
    for (std::size_t i = 0; i < digits; ++i) text += static_cast<char>('0' + Below(10));
    return text;
  }
  // A few hundred bytes of notes.
  std::string Notes() {
    std::string text;
    while (text.size() < 250) text += Pick(kNoteSentences);
    return text;
  }

 private:
  std::mt19937 rng_{20240611};
};

void FillMachine(Source& source, CTestConfig& machine) {
  const std::string_view brand = source.Pick(kBrands);
  machine.brand = brand;
  machine.model = std::string(brand) + " " + std::string(source.Pick(kModels));
  machine.operatingSystem = source.Pick(kSystems);
  machine.version = source.Pick(kSystemVersions);
  machine.cpuType = source.Pick(kCpus);
  machine.cpuSpeed = source.Pick(kSpeeds);
  machine.ram = source.Pick(kRam);
  machine.otherHardware = source.Pick(kOther);
  machine.videoController = source.Pick(kVideo);
  machine.hardDiskType = source.Pick(kDisks);
  machine.hardDiskSize = source.Pick(kDiskSizes);
  machine.hasCdRom = source.Below(4) != 0;
  if (machine.hasCdRom) machine.cdRom = "8x ATAPI";
  machine.hasModem = source.Below(2) != 0;
  if (machine.hasModem) machine.modem = "US Robotics Sportster 33.6";
  machine.hasPrinter = source.Below(3) != 0;
  if (machine.hasPrinter) machine.printer = source.Pick(kPrinters);
  machine.rom = "Phoenix BIOS 4.0 Release 6.0";
  machine.multipleMonitors = source.Below(10) == 0;
}

std::unique_ptr<CUser> MakePerson(Source& source, std::uint32_t n, bool customer) {
  auto person = std::make_unique<CUser>();
  const std::string first(source.Pick(kFirstNames));
  const std::string last(source.Pick(kLastNames));
  person->SetFirstName(first);
  person->SetLastName(last);
  std::string login = first.substr(0, 1) + last + std::to_string(n);
  for (char& c : login) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  person->SetLogin(login);
  if (!customer) person->SetPassword(source.Number(6));
  person->SetNotes(source.Notes());
  person->SetContactKind(0, 1);
  person->SetContactText(0, "(503) 555-" + source.Number(4));
  person->SetContactKind(1, 3);
  person->SetContactText(1, "(503) 555-" + source.Number(4));
  person->SetCompany(customer ? source.Pick(kCompanies) : "Corvane Software");
  person->SetAddress(source.Number(4) + " " + std::string(source.Pick(kStreets)) + "\r\n" +
                     std::string(source.Pick(kCities)));
  person->SetEmail(login + "@example.com");
  person->SetCustomer(customer);
  person->SetBetaSite(customer && source.Below(5) == 0 ? 1 : 0);
  person->SetNotifyFlags(customer ? 0 : CUser::kNotifyOnChanges);
  FillMachine(source, person->GetComputerConfig());
  return person;
}

// Adds the item through the table, then takes it out of the table again; answers its
// record id. The table inserts in sorted place by a linear walk, so keeping 100,000 items
// would cost billions of comparisons; the opening reads them from the file all the same.
std::uint32_t AddAndLetGo(ItemTable& table, std::unique_ptr<RecordItem> item) {
  RecordItem* added = item.get();
  Check(table.AddItem(item), "add item");
  const std::uint32_t id = added->GetId();
  table.RemoveItem(added);
  return id;
}

// The project of the run, made on first use and removed with its folder at exit.
class Files {
 public:
  static Files& Get() {
    static Files files;
    return files;
  }

  const std::string& Project() {
    if (project_.empty()) project_ = BuildProject("large.qmk");
    return project_;
  }
  std::uintmax_t ProjectSize() const {
    return project_.empty() ? 0 : std::filesystem::file_size(project_);
  }

 private:
  // The adds go in under one access, committed once: a flush per record would make the
  // setup take minutes and measure nothing.
  std::string BuildProject(const std::string& name) {
    const std::string path = dir_.File(name);
    bench::BenchProject project(path);
    CDBDoc& doc = project.doc;
    CProjectStore& store = *doc.store();
    Source source;

    Check(store.BeginAccess(true), "begin access");
    ItemTable& groups = *doc.GetTable(kGroupTag);
    std::vector<CUserGroup*> staffGroups;
    for (const char* groupName : {"Developers", "Testers", "Support", "Managers"}) {
      auto group = std::make_unique<CUserGroup>();
      group->name = groupName;
      group->description = std::string(groupName) + " of the product";
      staffGroups.push_back(group.get());
      std::unique_ptr<RecordItem> item = std::move(group);
      Check(groups.AddItem(item), "add group");
    }
    ItemTable& users = *doc.GetTable(kUserTag);
    ItemTable& configurations = *doc.GetTable(MakeTag("scfg"));
    for (std::uint32_t n = 1; n <= kStaff + kCustomers; ++n) {
      const bool customer = n > kStaff;
      std::unique_ptr<CUser> person = MakePerson(source, n, customer);
      CUserGroup* group = customer ? nullptr : staffGroups[source.Below(staffGroups.size())];
      if (group != nullptr) person->SetGroupId(group->GetId());
      const std::uint32_t id = AddAndLetGo(users, std::move(person));
      if (group != nullptr) group->AddUser(id);
    }
    for (CUserGroup* group : staffGroups) Check(groups.SaveItem(*group), "save group");
    for (std::uint32_t n = 1; n <= kConfigurations; ++n) {
      auto machine = std::make_unique<CTestConfig>();
      FillMachine(source, *machine);
      machine->name = "Lab " + source.Number(5) + " " + std::string(machine->cpuType.str());
      AddAndLetGo(configurations, std::move(machine));
    }
    ItemTable& components = *doc.GetTable(MakeTag("comp"));
    for (std::uint32_t n = 1; n <= kComponents; ++n) {
      std::string component = std::string(source.Pick(kComponentWords)) + " " +
                              std::string(source.Pick(kComponentWords)) + " " + std::to_string(n);
      AddAndLetGo(components, std::make_unique<ValueItem>(std::move(component), n));
    }
    Check(store.EndAccess(true), "end access");
    doc.CloseProject();
    return path;
  }

  test::TempDir dir_;
  std::string project_;
};

// ---- the pair ----

// One opening as the program does it with a remembered login, and the closing after.
bool OpenAndClose(const std::string& path) {
  bench::SilentUi ui;
  test::QuietHost host;
  ProjectItemKinds kinds;
  CDBDoc doc(ui, kinds, host);
  if (doc.OpenProject(path, ui::LoginEntry{"admin", ""}) != 1) return false;
  benchmark::DoNotOptimize(doc.GetTable(kUserTag)->count());
  doc.CloseProject();
  return true;
}

// An untimed opening first: the first one in a process also pays for growing the heap,
// which the read's buffer, made before its timing, does not.
void OpenProject(benchmark::State& state) {
  const std::string& path = Files::Get().Project();
  if (!OpenAndClose(path)) state.SkipWithError("the project did not open");
  for (auto _ : state) {
    if (!OpenAndClose(path)) {
      state.SkipWithError("the project did not open");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
}

// The floor: every byte of the file read once.
void ReadFile(benchmark::State& state) { bench::ReadWholeFile(state, Files::Get().Project()); }

// ---- the ratio ----

// The console report, and at the end the measured pair as a ratio.
class ProjectRatios : public bench::RatioReporter {
 protected:
  void WriteRatios() override {
    char unit[64];
    std::snprintf(unit, sizeof unit, "ms per file of %.1f MB",
                  static_cast<double>(Files::Get().ProjectSize()) / (1 << 20));
    Ratio("opening and closing / reading the file", kOpenName, kReadName, unit, 0.0);
    char line[128];
    std::snprintf(line, sizeof line, "  %-38s %6.2f  us per record, %u records\n",
                  "opening and closing, per record", Seconds(kOpenName) * 1e6 / kRecords, kRecords);
    GetOutputStream() << line;
  }
};

void RegisterAll() {
  // Each case runs three times and the ratio takes the medians, since a shared machine's
  // disk and caches wander.
  constexpr int kRepetitions = 3;
  for (auto* b : {benchmark::RegisterBenchmark(kOpenName, OpenProject),
                  benchmark::RegisterBenchmark(kReadName, ReadFile)}) {
    b->Repetitions(kRepetitions)
        ->ReportAggregatesOnly(true)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
  }
}

}  // namespace
}  // namespace qm

int main(int argc, char** argv) {
  qm::ProjectRatios reporter;
  return qm::bench::RunBenchmarks(argc, argv, qm::RegisterAll, reporter);
}
