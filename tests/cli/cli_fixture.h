#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/host_database.h"
#include "tests/support/sandbox.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::cli {

using test::Json;

struct Outcome {
    int exit_code = -1;
    std::string output;
};

// Runs the program itself, as a shell script would.
class Cli : public testing::Test {
  protected:
    void SetUp() override {
        setenv("TAVRIX_SETTINGS", (folder_ + "Tavrix.json").c_str(), 1);
        unsetenv("TAVRIX_TOKEN");
    }
    void write(const std::string& name, const std::string& text) {
        std::ofstream(folder_ + name, std::ios::binary) << text;
    }

    Outcome run(const std::string& arguments, const char* messages = "2>&1") {
        FILE* pipe = popen((TAVRIX_PROGRAM " " + arguments + " " + messages).c_str(), "r");
        Outcome outcome;
        char buffer[4096];
        while (const std::size_t size = fread(buffer, 1, sizeof buffer, pipe))
            outcome.output.append(buffer, size);
        outcome.exit_code = WEXITSTATUS(pclose(pipe));
        return outcome;
    }

    /// Everything that the command line, which it gives, speaks of.
    std::string ready_to_send(const test::Sandbox& sandbox, const std::string& http = "") {
        write("Tavrix.json", R"({"ksef":{"test":")" + sandbox.origin() +
                                 R"("},"http":{"proxy":"direct")" + http + "}}");
        write("faktura.xml", test::demonstration_invoice_file());
        write("token.txt", "R|nip-5265877635|s\n");
        write("firma.db", "");
        ports::SqliteConnection::open(folder_ + "firma.db", true)
            ->execute_script(test::demonstration_schema());
        return "send --json --nip 5265877635 --table dok_fak --id 1001 --token-file '" + folder_ +
               "token.txt' --xml '" + folder_ + "faktura.xml' --db '" + folder_ + "firma.db'";
    }

    std::string content(const std::string& name) {
        std::ifstream file(folder_ + name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    test::ScratchFolder scratch_;
    std::string folder_ = scratch_.path().string() + "/";
};

}  // namespace tavrix::cli
