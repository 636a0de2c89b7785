// Runs a fuzz target on every file of the folders named: its corpus, among the ordinary tests.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/fuzz.h"

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        if (fs::is_directory(argv[i])) {
            for (const auto& entry : fs::directory_iterator(argv[i])) files.push_back(entry.path());
        } else {
            files.emplace_back(argv[i]);
        }
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        std::printf("%s\n", file.filename().c_str());
        std::fflush(stdout);
        std::ifstream stream(file, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(stream)), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    if (files.empty()) std::fprintf(stderr, "there is nothing to run\n");
    return files.empty() ? 1 : 0;
}
