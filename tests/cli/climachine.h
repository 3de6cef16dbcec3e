#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cli/commandline.h"
#include "platform/engine/database.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {

/// Runs command lines in the process, with buffers for the terminal and an own settings store.
class CliMachine {
  public:
    int run(const std::vector<std::string>& arguments) {
        out_.str("");
        err_.str("");
        return cli::runCommandLine(arguments, {.out = out_,
                                               .err = err_,
                                               .programFolder = programFolder,
                                               .settingsFile = folder_ / "settings.ini",
                                               .locale = Locale(Locale::Kind::Swedish),
                                               .cancel = cancel});
    }

    [[nodiscard]] std::string out() const { return out_.str(); }
    [[nodiscard]] std::string err() const { return err_.str(); }
    [[nodiscard]] std::string data() const { return (folder_ / "data").string(); }
    [[nodiscard]] std::filesystem::path company() const { return folder_ / "data" / "FTG1.mdb"; }
    [[nodiscard]] std::unique_ptr<Database> open() const {
        const OpenOptions options;
        return openFileDatabase(company(), options);
    }
    [[nodiscard]] std::string file(std::string_view name) const { return (folder_ / name).string(); }

    /// From now on nothing can be written to the output.
    void closeOutput() { out_.setstate(std::ios::badbit); }

    std::atomic<bool> cancel{false};
    std::filesystem::path programFolder = KOLMERA_BIN_DIR;

  private:
    TemporaryFolder folder_;
    std::ostringstream out_;
    std::ostringstream err_;
};

/// The same with the demo company in FTG1.mdb.
class DemoMachine : public CliMachine {
  public:
    DemoMachine() { EXPECT_EQ(run({"demo", data()}), 0) << err(); }
    int runJob(const std::string& job, const std::vector<std::string>& options = {}) {
        std::vector<std::string> arguments = {"run", job, "--data", data()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run(arguments);
    }
};

}  // namespace kolmera::test
