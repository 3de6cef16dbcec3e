#include "platform/batchprocess.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <iterator>
#include <string_view>
#include <vector>

#include "platform/descriptor.h"
#include "platform/encodings.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

// What the shell of a batch holds besides its output. Its commands do not: a program that a command leaves behind must
// not keep the turn.
constexpr int kStatusInShell = 8;
constexpr int kLockInShell = 9;
constexpr std::string_view kWithoutOurs = "8>&- 9>&-";

std::string shellQuoted(const std::string& text) { return fmt::format("'{}'", replaceAll(text, "'", "'\\''")); }

/// The words of a line: between blanks, or between double quotes.
std::vector<std::string> wordsOf(std::string_view line) {
    std::vector<std::string> words;
    bool inQuotes = false;
    bool inWord = false;
    for (const char c : line) {
        if (c == '"') inQuotes = !inQuotes;
        const bool separates = !inQuotes && (c == ' ' || c == '\t');
        if (!separates && !inWord) words.emplace_back();
        inWord = !separates;
        if (inWord && c != '"') words.back().push_back(c);
    }
    return words;
}

/// A file name with "*" and "?" as a pattern of the shell that takes ASCII letters in both cases. "*.*" is every file.
std::string patternOf(const std::string& name) {
    if (name == "*.*") return "*";
    std::string pattern;
    for (const char c : name) {
        const std::string one(1, c);
        const std::string lower = lowerCase(one);
        const std::string upper = upperCase(one);
        if (c == '*' || c == '?') {
            pattern += c;
        } else {
            pattern += lower == upper ? shellQuoted(one) : fmt::format("[{}{}]", lower, upper);
        }
    }
    return pattern;
}

/// Turns the lines of a batch file into lines for /bin/sh. The commands of the batch language that are known here take
/// Windows paths; any other line is the shell's as it is, in a shell of its own, so that nothing in it (an error in its
/// quotes, an "exit") keeps the later lines from running. The first exit status that is not 0 is kept.
class ShellScript {
  public:
    ShellScript(const fs::path& folder, const DriveMap& drives) : folder_(folder), drives_(drives) {}

    void add(std::string_view line) {
        line = trimmed(line);
        if (line.starts_with('@')) line = trimmed(line.substr(1));
        const Arguments words = wordsOf(line);
        if (words.empty()) return;
        const auto* command = std::ranges::find_if(
            kCommands, [&words](const Command& row) { return equalNoCase(row.name, words.front()); });
        if (command != std::end(kCommands) && std::ranges::none_of(words, isShellOperator)) {
            (this->*command->translate)(argumentsOf(words));
            return;
        }
        addCommand("( eval {} )", shellQuoted(std::string(line)));
    }

    /// Adds the end: tells the exit status, and removes a file whatever folder the lines before have gone to.
    void endBy(const fs::path& removedFile) {
        addLine("echo $kolmera_status >&{}", kStatusInShell);
        addLine("rm -f -- {}", shellQuoted(removedFile.string()));
    }

    [[nodiscard]] const std::string& text() const { return script_; }

  private:
    using Arguments = std::vector<std::string>;
    struct Command {
        std::string_view name;
        void (ShellScript::*translate)(const Arguments&);
    };
    static const Command kCommands[8];

    template <typename... Values>
    void addLine(fmt::format_string<Values...> format, Values&&... values) {
        fmt::format_to(std::back_inserter(script_), format, std::forward<Values>(values)...);
        script_ += '\n';
    }

    template <typename... Values>
    void addCommand(fmt::format_string<Values...> format, Values&&... values) {
        const std::string command = fmt::format(format, std::forward<Values>(values)...);
        addLine("{} {} || kolmera_failed $?", command, kWithoutOurs);
    }

    /// Several commands in one line are written for the shell.
    static bool isShellOperator(std::string_view word) {
        return word == "&&" || word == "&" || word == "||" || word == "|" || word == ";" || word.ends_with(';');
    }

    /// The words behind the command, without switches ("/Y") and without what follows a redirection ("> NUL").
    static Arguments argumentsOf(Arguments words) {
        words.erase(words.begin());
        const auto redirected = std::ranges::find_if(words, [](const std::string& word) {
            return word.starts_with('>') || word.starts_with("1>") || word.starts_with("2>");
        });
        words.erase(redirected, words.end());
        std::erase_if(words, [](const std::string& word) {
            return word.starts_with('/') && (word.size() == 2 || word.starts_with("/-")) && !fs::exists(word);
        });
        return words;
    }

    [[nodiscard]] fs::path resolved(const std::string& path) const { return drives_.resolve(path, folder_); }

    /// The file or files of an argument for a command of the shell.
    [[nodiscard]] std::string filesOf(const std::string& argument) const {
        const fs::path path = resolved(argument);
        if (argument.find_first_of("*?") == std::string::npos) return shellQuoted(path.string());
        return shellQuoted(path.parent_path().string()) + "/" + patternOf(path.filename().string());
    }

    void remove(const Arguments& names) {
        for (const std::string& name : names) addCommand("rm -f -- {}", filesOf(name));
    }

    void copy(const Arguments& names) {
        if (names.empty()) return;
        const fs::path to = names.size() > 1 ? resolved(names[1]) : folder_;
        addCommand("cp -f -- {} {}", filesOf(names[0]), shellQuoted(to.string()));
    }

    /// An existing file of the new name stays, and the old one too.
    void rename(const Arguments& names) {
        if (names.size() < 2) return;
        const fs::path from = resolved(names[0]);
        const std::string to = shellQuoted(drives_.resolve(names[1], from.parent_path()).string());
        addCommand("[ ! -e {0} ] && mv -- {1} {0}", to, shellQuoted(from.string()));
    }

    void changeFolder(const Arguments& names) {
        if (names.empty()) return;
        const fs::path wanted = resolved(names[0]);
        addCommand("cd -- {}", shellQuoted(wanted.string()));
        std::error_code ignored;
        if (fs::is_directory(wanted, ignored)) folder_ = wanted;
    }

    void nothing(const Arguments&) {}

    fs::path folder_;
    const DriveMap& drives_;
    std::string script_ =
        "ECHO() { echo \"$@\"; }\n"
        "kolmera_status=0\n"
        "kolmera_failed() { [ $kolmera_status != 0 ] || kolmera_status=$1; }\n";
};

constexpr ShellScript::Command ShellScript::kCommands[8] = {
    {"del", &ShellScript::remove},         {"erase", &ShellScript::remove},  {"copy", &ShellScript::copy},
    {"ren", &ShellScript::rename},         {"rename", &ShellScript::rename}, {"cd", &ShellScript::changeFolder},
    {"chdir", &ShellScript::changeFolder}, {"rem", &ShellScript::nothing},
};

/// What the shell starts with: its own session, no signal ignored or blocked.
class SpawnSettings {
  public:
    SpawnSettings(const fs::path& folder, const Descriptor& status, const Descriptor& lock) {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
        posix_spawn_file_actions_adddup2(&actions, 2, 1);
        posix_spawn_file_actions_adddup2(&actions, status.get(), kStatusInShell);
        posix_spawn_file_actions_adddup2(&actions, lock.get(), kLockInShell);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes, &signals);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }

    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
};

/// Starts a script as a process that is nobody's child here: the shell that is started puts it in the background,
/// where it has no input, and ends at once.
void startDetached(const std::string& script, const SpawnSettings& settings) {
    std::string shell = "/bin/sh";
    std::string option = "-c";
    std::string background = fmt::format("(\n{}) &", script);
    char* arguments[] = {shell.data(), option.data(), background.data(), nullptr};
    pid_t process = 0;
    const int error = posix_spawn(&process, shell.c_str(), &settings.actions, &settings.attributes, arguments, environ);
    if (error != 0) throwSystemError(error);
    while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
}

/// The same file under a number that the shell's own cannot meet.
Descriptor beyondTheShells(const Descriptor& descriptor) {
    return Descriptor(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, kLockInShell + 1));
}

Descriptor openLock(const fs::path& file) {
    try {
        return beyondTheShells(Descriptor(file, O_RDWR | O_CREAT | O_NOFOLLOW));
    } catch (const PlatformError&) {
        return beyondTheShells(Descriptor(file, O_RDONLY | O_NOFOLLOW));  // another user has made it
    }
}

}  // namespace

// The lock's name begins with a dot, so that "DEL *.*" passes it by.
BatchFile::BatchFile(const fs::path& folder, const std::string& name)
    : folder_(folder), name_(name), file_(folder / name), lock_(openLock(folder / fmt::format(".{}.lock", name))) {}

bool BatchFile::takeTurn() {
    if (flock(lock_.get(), LOCK_EX | LOCK_NB) == 0) return true;
    if (errno != EWOULDBLOCK && errno != EINTR) throwSystemError(errno);
    return false;
}

void BatchFile::start(const std::string& command, const DriveMap& drives) {
    std::error_code told;
    fs::remove(file_, told);
    const Descriptor batch(file_, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
    try {
        batch.write(fromUtf8(fmt::format("{}\r\nDEL {}\r\n", command, name_), CodePage::Windows1252));
        run(command, drives);
    } catch (const PlatformError&) {
        fs::remove(file_, told);
        throw;
    }
}

void BatchFile::run(const std::string& command, const DriveMap& drives) {
    ShellScript script(folder_, drives);
    for (const std::string& line : split(replaceAll(command, "\r", ""), "\n")) script.add(line);
    script.endBy(file_);
    status_ = beyondTheShells(Descriptor(memfd_create("status", MFD_CLOEXEC)));
    startDetached(script.text(), SpawnSettings(folder_, status_, lock_));
}

bool BatchFile::ended() const {
    std::error_code unreadable;
    return !fs::exists(fs::symlink_status(file_, unreadable));
}

std::optional<int> BatchFile::exitStatus() const {
    std::string text(8, '\0');
    text.resize(status_.readAt(0, text.data(), text.size()));
    int status = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), status);
    return error == std::errc() && end != text.data() ? std::optional(status) : std::nullopt;
}

}  // namespace kolmera
