// Reads what twin.js has written and writes it again, byte by byte the same: tavolin_twin FILE.
// Leaves a database of its own as native.cdb.
#include <fstream>
#include <iostream>
#include <iterator>

#include "tavolin/engine/engine.h"

namespace {

std::string Bytes(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

int main(int, char** arguments) {
    const std::string theirs = Bytes(arguments[1]);
    tavolin::CVLDBEngine engine;
    engine.LogOn("ann", "secret");
    engine.LoadDB(arguments[1]);
    engine.DBLegalUser(engine.LogedOnUser(), tavolin::Ownership);
    engine.SaveDB();
    const std::string name = engine.GetRecord("Customers", "k99")->prop(1);
    if (theirs.empty() || Bytes(arguments[1]) != theirs || name != "n\u012B1") {
        std::cout << "not the same: " << theirs.size() << " bytes, " << name << '\n';
        return 1;
    }
    engine.AddRecord("Customers", 100, {"native", name});
    engine.SaveDB({}, "native");
    std::cout << theirs.size() << " bytes\n";
}
