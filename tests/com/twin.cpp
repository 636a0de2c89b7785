// Does what twin.js does, at the moment at which the component did it, and compares the files byte
// by byte: tavolin_twin FILE. Leaves its own file as native.cdb.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "tavolin/base/clock.h"
#include "tavolin/engine/engine.h"

namespace {

std::string Bytes(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// One of the letters from U+00C9 on as UTF-8.
std::string Letter(int number) {
    const int code = 200 + number;
    return {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
}

void Write() {
    tavolin::CVLDBEngine engine;
    engine.LogOn("ann", "secret");
    engine.CreateNewDB("twin", "");
    engine.CreateNewPrimaryTable("Customers", {"ID", "Name"});
    engine.CreateNewLinkedTable("Customers", 1, {"Name"});
    for (int i = 1; i <= 100; ++i) {
        const std::string name = "n" + Letter(i) + std::to_string(i % 7);
        engine.AddRecord("Customers", i, {"k" + std::to_string(i), name});
    }
    engine.GetRecord("Customers", 3)->Attach(1, "C:\\a.png", tavolin::aPicture);
    engine.CVLDBUserSet()->Item(1)->CVLUserNoteSet()->Add(tavolin::MakeDate(2026, 11, 15, 1, 5), 1,
                                                          "first");
    engine.LogDBActivities(true, false, false, false, false, false, false, false, true);
    engine.DeleteRecord("Customers", "k50");
    engine.SaveDB();
}

}  // namespace

int main(int, char** arguments) {
    const std::string theirs = Bytes(arguments[1]);
    tavolin::CVLDBEngine reader;
    reader.LogOn("ann", "secret");
    reader.LoadDB(arguments[1]);
    const tavolin::Date moment = reader.DBCreationDate();
    tavolin::SetClock([&] { return moment; });
    std::filesystem::remove(arguments[1]);
    Write();
    std::filesystem::rename("twin.cdb", "native.cdb");
    const std::string ours = Bytes("native.cdb");
    if (theirs.empty() || ours != theirs) {
        std::cout << "the files differ: " << theirs.size() << " and " << ours.size() << " bytes\n";
        return 1;
    }
    std::cout << ours.size() << " bytes\n";
}
