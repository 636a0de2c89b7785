// Runs a fuzz target among the ordinary tests: on every file of the folders named, its corpus, and
// with `-random N` on so many inputs of chance.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "fuzz/fuzz.h"

static void RunRandom(int inputs) {
    const unsigned seed = std::random_device{}();
    std::printf("%d random inputs, seed %u\n", inputs, seed);
    std::fflush(stdout);
    std::mt19937 random(seed);
    for (int i = 0; i < inputs; ++i) {
        std::vector<std::uint8_t> bytes(random() % 800);
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
}

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) == "-random") {
            RunRandom(std::atoi(argv[++i]));
        } else if (fs::is_directory(argv[i])) {
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
