// The host's command language: any session on a small database ends with an exit status, and leaves
// a database that can be loaded. A session has a folder of its own for the root of all paths, so
// that no command reaches anything else.
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "cli/completion.h"
#include "cli/failure.h"
#include "cli/shell.h"
#include "fuzz/walk.h"
#include "tavolin/base/clock.h"

namespace tavolin::fuzz {
namespace {

namespace fs = std::filesystem;

// While a process is inside, the folder is its root, which takes root's rights (in a namespace of
// users they do as well). Without them it is only the current folder: good enough for inputs that
// are known.
class Box {
  public:
    Box() {
        std::string pattern =
            (fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path()) /
            "tavolin-fuzz-XXXXXX";
        Require(::mkdtemp(pattern.data()) != nullptr, "there is a folder to work in");
        folder_ = pattern;
    }
    ~Box() {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;

    bool Enter() {
        confined_ = ::chroot(folder_.c_str()) == 0;
        Require(::chdir(confined_ ? "/" : folder_.c_str()) == 0, "the folder can be entered");
        return confined_;
    }
    void Leave() {
        Require(::fchdir(root_) == 0 && (!confined_ || ::chroot(".") == 0) && ::fchdir(here_) == 0,
                "the folder can be left");
    }
    void Empty() {
        for (const auto& entry : fs::directory_iterator(folder_)) fs::remove_all(entry.path());
    }

  private:
    fs::path folder_;
    int root_ = ::open("/", O_RDONLY | O_DIRECTORY);
    int here_ = ::open(".", O_RDONLY | O_DIRECTORY);
    bool confined_ = false;
};

Box& TheBox() {
    static Box box;
    return box;
}

// The standard streams come from and go to texts meanwhile.
class Streams {
  public:
    explicit Streams(const std::string& input) : in_(input) {
        std::cin.clear();
        cin_ = std::cin.rdbuf(&in_);
        cout_ = std::cout.rdbuf(&out_);
        cerr_ = std::cerr.rdbuf(&out_);
    }
    ~Streams() {
        std::cin.rdbuf(cin_);
        std::cout.rdbuf(cout_);
        std::cerr.rdbuf(cerr_);
    }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;
    std::string output() const { return out_.str(); }

  private:
    std::stringbuf in_;
    std::stringbuf out_;
    std::streambuf* cin_ = nullptr;
    std::streambuf* cout_ = nullptr;
    std::streambuf* cerr_ = nullptr;
};

constexpr const char* kPassword = "quartz-lantern";
constexpr const char* kFirstSession =
    "create\n"
    "make-table People --fields ID,Name,City --key ID\n"
    "make-table Cities --fields City,Country\n"
    "link People City Cities\n"
    "add People 7 'Ann Lee' Paris\n"
    "add People 8 Bob Rome\n"
    "attach People 7 a.png --kind picture\n"
    "add-user bob --read --no-password\n"
    "note add --user bob 'Asked for it'\n"
    "log on all\n"
    "save\n";

int RunCommands(const std::string& commands, cli::Format format, std::string& output) {
    const Streams streams(commands);
    cli::HostOptions options;
    options.file = "shop";
    options.user = "ann";
    options.password = kPassword;
    options.output.format = format;
    options.keep_going = true;
    cli::Host host(options);
    const int status = cli::RunSession(host);
    if (host.loaded()) {
        for (const auto& table : host.engine().CVLTableSet()->NewEnum()) {
            if (Refusal([&] { host.engine().GetTable(table); }) != 0) continue;
            Refusal([&] { table->GetRecord(1); });
        }
    }
    output = streams.output();
    return status;
}

// The files that every session begins with.
using Files = std::vector<std::pair<std::string, Bytes>>;

Files MakeFiles() {
    std::string output;
    RunCommands(kFirstSession, cli::Format::kTable, output);
    Files files;
    for (const char* name : {"shop.cdb", "RDX.dat"}) {
        files.emplace_back(name, FileSystem::Current().ReadFile(name));
    }
    const auto add = [&](const char* name, std::string_view text) {
        files.emplace_back(name, Bytes(text.begin(), text.end()));
    };
    add("cities.csv", "City,Country\nOslo,Norway\n\"New York\",USA\n");
    add("people.csv", "ID,Name\n9,Eve\n10,\"Dan \"\"D\"\"\"\n");
    add("pw.txt", "word\n");
    return files;
}

// From inside the box libFuzzer cannot write what it has found.
void KeepInput(const std::uint8_t* data, std::size_t size) {
    const char* const file = std::getenv("TAVOLIN_FUZZ_LAST_INPUT");
    if (file == nullptr) return;
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

// Whatever can be saved can be loaded.
void LoadAgain() {
    if (!fs::exists("shop.cdb")) return;
    CVLDBEngine engine;
    engine.LogOn("ann", kPassword);
    Require(Refusal([&] { engine.LoadDB("shop.cdb"); }) == 0, "the database can be loaded");
    const auto owner = engine.CVLDBUserSet()->Find(engine.DBOwner());
    if (!owner) return;
    engine.LogOnAsUser(owner);
    if (Refusal([&] { engine.DBLegalUser(engine.LogedOnUser(), Ownership); }) == 0) {
        WalkDatabase(engine);
    }
}

}  // namespace
}  // namespace tavolin::fuzz

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    using namespace tavolin::fuzz;
    Require(TheBox().Enter(), "the target may confine itself: see fuzz/run");
    TheBox().Leave();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavolin;
    using namespace tavolin::fuzz;
    if (size == 0) return 0;
    KeepInput(data, size);
    if (::isatty(STDIN_FILENO) != 0) ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
    ::setenv("TAVOLIN_FOLDER", ".", 1);
    SetClock([] { return MakeDate(2026, 11, 15, 1, 5); });
    const std::string commands(reinterpret_cast<const char*>(data) + 1, size - 1);
    TheBox().Enter();
    static const Files files = MakeFiles();
    for (const auto& [name, bytes] : files) FileSystem::Current().Write(name, bytes);

    std::string output;
    const int status = RunCommands(commands, static_cast<cli::Format>(data[0] % 4), output);
    Require(status >= cli::kSuccess && status <= cli::kUsage, "a session has an exit status");
    // What somebody types where a name belongs is shown, whatever it is.
    Require(output.find(kPassword) == std::string::npos ||
                commands.find(kPassword) != std::string::npos,
            "no password is shown");
    LoadAgain();
    TheBox().Leave();
    TheBox().Empty();

    const cli::LineCompletion completion =
        cli::CompleteLine(commands, {{{"People", {"ID", "Full name"}}}, {"ann"}});
    Require(completion.begin <= commands.size(), "a word that is completed stands in the line");
    return 0;
}
