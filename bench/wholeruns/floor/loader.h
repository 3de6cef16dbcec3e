#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>

#include "wholeruns/formats.h"
#include "wholeruns/sqlite.h"

namespace kolmera::bench {

/// A transaction that ends every 25 records, while the physical commits keep the connection's pause apart.
class JoinedCommits {
  public:
    explicit JoinedCommits(Connection& connection) : begin_(connection, "BEGIN"), commit_(connection, "COMMIT") {
        begin_.run();
    }
    void recordDone() {
        if (++records_ % 25 != 0 || Clock::now() - last_ < Connection::kCommitPause) return;
        commit_.run();
        begin_.run();
        last_ = Clock::now();
    }
    void finish() { commit_.run(); }

  private:
    using Clock = std::chrono::steady_clock;
    Statement begin_;
    Statement commit_;
    std::uint64_t records_ = 0;
    Clock::time_point last_ = Clock::now();
};

// The hand-written loaders. Each does what the job of its format in the data folder does, and nothing more.
void loadMask(Connection& company, const std::filesystem::path& folder, Format format);
void loadEioRsk(Connection& company, const std::filesystem::path& folder, Format format);
void loadFinfo(Connection& company, const std::filesystem::path& folder);

}  // namespace kolmera::bench
