#include "platform/spreadsheet/xlsreader.h"

#include <fcntl.h>
#include <freexl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "platform/descriptor.h"
#include "platform/error.h"

namespace kolmera {

namespace {

// What the child writes to the pipe: cells of a row from its first column on, ends of rows, and one end with the
// library's result. A cell is its kind, and bytes as they are in memory: double 8, a text its length (4) and itself.
enum class Mark : char { Null = '0', Number = 'n', Text = 't', Date = 'd', RowEnd = 'r', End = 'e' };

constexpr rlim_t kSeconds = 60;
constexpr rlim_t kMemory = rlim_t{1} << 30;

[[noreturn]] void refuse(const std::string& reason) { throw PlatformError(errors::kUnreadableSpreadsheet, reason); }

// ---- the child: nothing here may throw, lock or touch what the parent's threads may hold ----

/// Writes to the pipe in large pieces. Ends the process when the parent has gone.
class PipeWriter {
  public:
    explicit PipeWriter(int pipe) : pipe_(pipe) {}

    void mark(Mark mark) { put(&mark, 1); }
    void put(const void* bytes, std::size_t count) {
        const auto* at = static_cast<const char*>(bytes);
        while (count > 0) {
            if (used_ == buffer_.size()) flush();
            const std::size_t piece = std::min(count, buffer_.size() - used_);
            std::memcpy(buffer_.data() + used_, at, piece);
            used_ += piece;
            at += piece;
            count -= piece;
        }
    }
    void flush() {
        for (std::size_t done = 0; done < used_;) {
            const ssize_t written = write(pipe_, buffer_.data() + done, used_ - done);
            if (written < 0 && errno != EINTR) _exit(1);
            if (written > 0) done += static_cast<std::size_t>(written);
        }
        used_ = 0;
    }

  private:
    int pipe_;
    std::array<char, 65536> buffer_;
    std::size_t used_ = 0;
};

void putCell(const FreeXL_CellValue& cell, PipeWriter& pipe) {
    const auto putNumber = [&pipe](double number) {
        pipe.mark(Mark::Number);
        pipe.put(&number, sizeof number);
    };
    const auto putText = [&pipe](Mark mark, const char* text) {
        const auto length = static_cast<std::uint32_t>(std::strlen(text));
        pipe.mark(mark);
        pipe.put(&length, sizeof length);
        pipe.put(text, length);
    };
    switch (cell.type) {
        case FREEXL_CELL_INT:
            return putNumber(cell.value.int_value);
        case FREEXL_CELL_DOUBLE:
            return putNumber(cell.value.double_value);
        case FREEXL_CELL_TEXT:
        case FREEXL_CELL_SST_TEXT:
            if (cell.value.text_value) return putText(Mark::Text, cell.value.text_value);
            break;
        case FREEXL_CELL_DATE:
        case FREEXL_CELL_DATETIME:
            return putText(Mark::Date, cell.value.text_value);
        case FREEXL_CELL_TIME:
            return putText(Mark::Text, cell.value.text_value);
        default:
            break;
    }
    pipe.mark(Mark::Null);
}

int putSheet(const void* workbook, PipeWriter& pipe) {
    unsigned int protectedBy = FREEXL_BIFF_PLAIN;
    if (freexl_get_info(workbook, FREEXL_BIFF_PASSWORD, &protectedBy) == FREEXL_OK &&
        protectedBy == FREEXL_BIFF_OBFUSCATED) {
        return FREEXL_BIFF_OBFUSCATED;
    }
    int result = freexl_select_active_worksheet(workbook, 0);
    unsigned int rows = 0;
    unsigned short columns = 0;
    if (result == FREEXL_OK) result = freexl_worksheet_dimensions(workbook, &rows, &columns);
    for (unsigned int row = 0; result == FREEXL_OK && row < rows; ++row) {
        for (unsigned short column = 0; result == FREEXL_OK && column < columns; ++column) {
            FreeXL_CellValue cell;
            result = freexl_get_cell_value(workbook, row, column, &cell);
            if (result == FREEXL_OK) putCell(cell, pipe);
        }
        pipe.mark(Mark::RowEnd);
    }
    return result;
}

void limit(int resource, rlim_t most) {
    const rlimit limits{most, most};
    setrlimit(static_cast<__rlimit_resource_t>(resource), &limits);
}

[[noreturn]] void runChild(const char* file, int pipe, rlim_t addressSpace) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_CPU, kSeconds);
    limit(RLIMIT_AS, addressSpace);
    for (const int number : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGPIPE, SIGXCPU, SIGTERM, SIGINT}) {
        signal(number, SIG_DFL);
    }
    PipeWriter out(pipe);
    const void* workbook = nullptr;
    int result = freexl_open(file, &workbook);
    if (result == FREEXL_OK) result = putSheet(workbook, out);
    out.mark(Mark::End);
    out.put(&result, sizeof result);
    out.flush();
    _exit(0);
}

// ---- the parent ----

/// What this process has of address space, in bytes: the child starts with as much.
rlim_t addressSpaceNow() {
    std::ifstream status("/proc/self/statm");
    rlim_t pages = 0;
    status >> pages;
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

/// The child process and what comes from it. It ends with this object, whatever it is doing.
class Child {
  public:
    explicit Child(const std::filesystem::path& file) {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throwSystemError(errno);
        pipe_ = ends[0];
        const rlim_t addressSpace = addressSpaceNow() + kMemory;
        process_ = fork();
        const int failure = errno;
        if (process_ == 0) runChild(file.c_str(), ends[1], addressSpace);
        close(ends[1]);
        if (process_ > 0) return;
        close(pipe_);
        throwSystemError(failure);
    }
    ~Child() {
        close(pipe_);
        kill(process_, SIGKILL);
        while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    Mark mark() { return static_cast<Mark>(number<char>()); }

    template <typename Number>
    Number number() {
        Number number{};
        get(reinterpret_cast<char*>(&number), sizeof number);
        return number;
    }

    std::string text() {
        constexpr std::uint32_t kMost = 1 << 20;
        const auto length = number<std::uint32_t>();
        if (length > kMost) refuse("A text in the workbook is too long.");
        std::string text(length, '\0');
        get(text.data(), text.size());
        return text;
    }

  private:
    void get(char* bytes, std::size_t count) {
        while (count > 0) {
            if (at_ == end_) fill();
            const std::size_t piece = std::min(count, end_ - at_);
            std::memcpy(bytes, buffer_.data() + at_, piece);
            at_ += piece;
            bytes += piece;
            count -= piece;
        }
    }

    void fill() {
        constexpr int kMostWait = static_cast<int>(kSeconds) * 1000;
        pollfd ready{pipe_, POLLIN, 0};
        int count = 0;
        while ((count = poll(&ready, 1, kMostWait)) < 0 && errno == EINTR) {
        }
        if (count == 0) refuse("Reading the workbook took too long; it may be damaged.");
        const ssize_t got = read(pipe_, buffer_.data(), buffer_.size());
        if (got < 0 && errno == EINTR) return;
        if (got <= 0) refuse("The workbook is damaged: its reader broke down.");
        at_ = 0;
        end_ = static_cast<std::size_t>(got);
    }

    pid_t process_ = -1;
    int pipe_ = -1;
    std::array<char, 65536> buffer_;
    std::size_t at_ = 0;
    std::size_t end_ = 0;
};

Value dateOrText(std::string text) {
    if (const auto date = Date::fromIso(std::string_view(text).substr(0, 10))) return *date;
    return text;
}

Value textOrNull(std::string text) {
    if (text.empty()) return Null();
    return text;
}

/// Judges the result of the library.
void checkEnd(int result) {
    switch (result) {
        case FREEXL_OK:
            return;
        case FREEXL_BIFF_OBFUSCATED:
            throw PlatformError(errors::kProtectedSpreadsheet, "The workbook is protected by a password.");
        case FREEXL_BIFF_WORKBOOK_NOT_FOUND:
            refuse("The file is not a workbook.");
        case FREEXL_BIFF_ILLEGAL_SHEET_INDEX:
            refuse("The workbook has no sheets.");
        case FREEXL_INSUFFICIENT_MEMORY:
            refuse("The workbook needs too much memory; it may be damaged.");
        default:
            refuse("The workbook is damaged (" + std::to_string(result) + ").");
    }
}

}  // namespace

void readXlsRows(const std::filesystem::path& file, const std::function<void(std::span<const Value> row)>& row) {
    Child child(file);
    std::vector<Value> cells;
    for (;;) {
        switch (child.mark()) {
            case Mark::Null:
                cells.emplace_back();
                break;
            case Mark::Number:
                cells.emplace_back(child.number<double>());
                break;
            case Mark::Text:
                cells.push_back(textOrNull(child.text()));
                break;
            case Mark::Date:
                cells.push_back(dateOrText(child.text()));
                break;
            case Mark::RowEnd:
                while (!cells.empty() && isNull(cells.back())) cells.pop_back();
                if (!cells.empty()) row(cells);
                cells.clear();
                break;
            case Mark::End:
                return checkEnd(child.number<int>());
            default:
                refuse("The workbook is damaged: its reader broke down.");
        }
    }
}

}  // namespace kolmera
