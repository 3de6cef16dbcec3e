#include "platform/jet/jetreader.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>

#include "platform/descriptor.h"
#include "platform/error.h"
#include "platform/jet/jetmessages.h"

namespace kolmera::jet {

namespace {

constexpr std::size_t kPiece = std::size_t{256} << 10;
constexpr int kPatience = 100;  // milliseconds between two questions whether to go on
/// A letter of a file becomes three bytes, a small value nine. A reader that tells much more goes round in a circle.
constexpr std::size_t kMostPerByte = 32;
constexpr std::size_t kMostAnyway = std::size_t{64} << 20;

/// The reader at work: its input is the file, its output a pipe to us; it has nothing else of ours.
class Reader {
  public:
    Reader(const std::filesystem::path& program, const Descriptor& file) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) throwSystemError(errno);
        output_ = Descriptor(ends[0]);
        const Descriptor input(ends[1]);
        start(program, file, input);
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() {
        if (process_ == 0) return;
        kill(process_, SIGKILL);
        status();
    }

    [[nodiscard]] const Descriptor& output() const { return output_; }
    /// Waits for its end; whether it has done its work.
    bool succeeded() {
        const int result = status();
        return WIFEXITED(result) && WEXITSTATUS(result) == 0;
    }

  private:
    void start(const std::filesystem::path& program, const Descriptor& file, const Descriptor& output) {
        posix_spawn_file_actions_t actions;
        posix_spawnattr_t attributes;
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        posix_spawn_file_actions_adddup2(&actions, file.get(), STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, output.get(), STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes, &signals);
        // A group of its own: Ctrl-C is ours to hear.
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        std::string name = program.string();
        char* arguments[] = {name.data(), nullptr};
        char* environment[] = {nullptr};  // settings of the library could change what it reads
        const int error = posix_spawn(&process_, name.c_str(), &actions, &attributes, arguments, environment);
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
        if (error == 0) return;
        process_ = 0;
        try {
            throwSystemError(error);
        } catch (const PlatformError& failure) {
            throw failure.about(name);
        }
    }

    int status() {
        int result = 0;
        while (waitpid(process_, &result, 0) < 0) {
            if (errno != EINTR) result = -1;
            if (errno != EINTR) break;
        }
        process_ = 0;
        return result;
    }

    pid_t process_ = 0;
    Descriptor output_;
};

/// Whether bytes of the reader, or its end, came in time.
bool isReady(const Descriptor& output) {
    pollfd waited{.fd = output.get(), .events = POLLIN, .revents = 0};
    return poll(&waited, 1, kPatience) > 0;
}

[[noreturn]] void sayDamaged() { throw PlatformError(errors::kDamaged, "the reader of the file has come to grief"); }

bool hear(Reader& reader, std::size_t most, ContentListener& listener, const std::function<bool()>& goOn) {
    MessageParser messages(listener);
    std::string piece(kPiece, '\0');
    for (std::size_t heard = 0; goOn();) {
        if (!isReady(reader.output())) continue;
        const std::size_t count = reader.output().read(piece.data(), piece.size());
        if (count == 0) {
            if (!reader.succeeded()) sayDamaged();
            messages.end();
            return true;
        }
        heard += count;
        if (heard > most) sayDamaged();
        messages.take(std::string_view(piece).substr(0, count));
    }
    return false;
}

}  // namespace

bool isAccessFile(const std::filesystem::path& file) {
    try {
        std::string beginning(19, '\0');
        const Descriptor descriptor(file, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        beginning.resize(descriptor.readAt(0, beginning.data(), beginning.size()));
        const std::string_view name = std::string_view(beginning).substr(std::min<std::size_t>(4, beginning.size()));
        return name == "Standard Jet DB" || name == "Standard ACE DB";
    } catch (const PlatformError&) {
        return false;  // who opens it will be told
    }
}

bool readAccessFile(const std::filesystem::path& reader, const std::filesystem::path& file, ContentListener& listener,
                    const std::function<bool()>& goOn) {
    // A pipe would be waited for, and read once only.
    const Descriptor descriptor(file, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (!std::filesystem::is_regular_file(file)) throw PlatformError(errors::kNotADatabase, "not a file");
    Reader process(reader, descriptor);
    return hear(process, kMostAnyway + kMostPerByte * descriptor.size(), listener, goOn);
}

}  // namespace kolmera::jet
