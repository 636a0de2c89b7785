// The program itself, run as a user runs it: words and files in, output and exit status out.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

namespace tavolin::cli {

namespace fs = std::filesystem;

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

struct HostTest : testing::Test {
    HostTest() : folder_(NewFolder()) {
        setenv("TAVOLIN_FOLDER", folder_.c_str(), 1);
        setenv("TAVOLIN_USER", "ann", 1);
        setenv("TAVOLIN_PASSWORD", "secret", 1);
        unsetenv("TAVOLIN_NEW_PASSWORD");
    }
    ~HostTest() override {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    fs::path Path(const std::string& name) const { return folder_ / name; }
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(folder_ / name, std::ios::binary) << text;
    }
    std::string Read(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(folder_ / name, std::ios::binary).rdbuf();
        return text.str();
    }

    // Runs `tavolin WORDS` in the folder; `words` goes through the shell, before it stand settings
    // of environment variables, or a pipe that the input comes from instead.
    Outcome Run(const std::string& words, const std::string& input = "",
                const std::string& settings = "", const std::string& program = Program()) const {
        Write("in.txt", input);
        Write("run.sh", "exec 2>err.txt\n" + settings + " " + program + " " + words +
                            (settings.ends_with("| ") ? "" : " <in.txt") + " >out.txt\n");
        const std::string command = "cd '" + folder_.string() + "' && bash run.sh";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Read("out.txt"), Read("err.txt")};
    }

    // The words of the shell that run the program. The environment's TAVOLIN_HOST names those of
    // one that is built for another system, whose words are UTF-16 and to which this machine's
    // permissions mean nothing.
    static bool ProgramIsForeign() { return std::getenv("TAVOLIN_HOST") != nullptr; }
    static std::string Program() {
        const char* const foreign = std::getenv("TAVOLIN_HOST");
        return foreign != nullptr ? foreign : "'" TAVOLIN_HOST "'";
    }

    // The program run by somebody whom permissions stop, which they do not do with root.
    static std::string WithoutPrivileges(const fs::path& program) {
        const char* const nobody = "setpriv --reuid 65534 --regid 65534 --clear-groups ";
        return (::geteuid() == 0 ? nobody : "") + ("'" + program.string() + "'");
    }

    std::string Csv(const std::string& table) const {
        return Run("--format csv --no-header shop list " + table).out;
    }

    void MakeShop() const {
        ASSERT_EQ(0, Run("shop create").status);
        ASSERT_EQ(0, Run("shop make-table People --fields ID,Name,City --key ID").status);
        ASSERT_EQ(0, Run("shop add People 7 'Ann Lee' Paris").status);
        ASSERT_EQ(0, Run("shop add People City=Rome ID=8").status);
        ASSERT_EQ("7,Ann Lee,Paris\n8,,Rome\n", Csv("People"));
    }

  private:
    static fs::path NewFolder() {
        std::random_device random;
        const auto name = "tavolin-host-" + std::to_string(random()) + std::to_string(random());
        fs::create_directories(fs::temp_directory_path() / name);
        return fs::temp_directory_path() / name;
    }

    fs::path folder_;
};

}  // namespace tavolin::cli
