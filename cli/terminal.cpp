#include "terminal.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

namespace Tessel::Cli {
namespace {

bool isErrorStreamTerminal() {
#ifdef _WIN32
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

std::filesystem::path pathOf(const std::string& path) {
    return std::filesystem::path(std::u8string(path.begin(), path.end()));
}

std::atomic<bool> interrupted = false;  // the fit asks in another thread than the one that is interrupted
static_assert(std::atomic<bool>::is_always_lock_free);

void noteInterrupt(int) {
    interrupted = true;
    std::signal(SIGINT, SIG_DFL);
}

bool writeFile(const std::string& bytes, const std::filesystem::path& path) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return !file.fail();
}

}  // namespace

void useBinaryStreams() {
#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
#endif
}

std::string readStandardInput() {
    constexpr std::size_t kBlock = 1 << 20;
    std::string text;
    std::size_t numRead = 0;
    do {
        const std::size_t size = text.size();
        text.resize(size + kBlock);
        numRead = std::fread(text.data() + size, 1, kBlock, stdin);
        text.resize(size + numRead);
    } while (numRead > 0);
    if (std::ferror(stdin)) throw Failure("standard input cannot be read");
    return text;
}

void writeBytes(const std::string& bytes, const std::string& path) {
    if (path.empty() || path == "-") {
        if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0)
            throw Failure("standard output cannot be written");
        return;
    }
    const std::filesystem::path target = pathOf(path);
    std::error_code error;
    // What is there and no ordinary file, such as a device or a pipe, is written to and not replaced.
    const bool isReplaced = !std::filesystem::exists(target, error) ||
                            std::filesystem::is_regular_file(std::filesystem::symlink_status(target, error));
    const std::filesystem::path part = isReplaced ? pathOf(path + ".part") : target;
    bool isWritten = writeFile(bytes, part);
    if (isWritten && isReplaced) {
        std::filesystem::rename(part, target, error);
        isWritten = !error;
    }
    if (isWritten) return;
    if (isReplaced) std::filesystem::remove(part, error);
    throw Failure(path + ": cannot be written");
}

InterruptNote::InterruptNote() : before_(std::signal(SIGINT, noteInterrupt)) {
    interrupted = false;
    if (before_ == SIG_IGN) std::signal(SIGINT, SIG_IGN);  // as shells have it in the background
}
InterruptNote::~InterruptNote() {
    if (before_ != SIG_ERR) std::signal(SIGINT, before_);
}
bool InterruptNote::isInterrupted() const { return interrupted; }

Progress::Progress(std::string text) : text_(std::move(text)) {
    if (isErrorStreamTerminal()) thread_ = std::thread([this] { run(); });
}

Progress::~Progress() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        isDone_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void Progress::report(double shareDone, std::string activity) {
    const std::lock_guard lock(mutex_);
    shareDone_ = shareDone;
    activity_ = std::move(activity);
}

void Progress::run() {
    std::unique_lock lock(mutex_);
    std::size_t length = 0;
    for (int seconds = 1; !changed_.wait_for(lock, std::chrono::seconds(1), [this] { return isDone_; });
         ++seconds) {
        std::string line = text_ + " ... ";
        if (shareDone_ >= 0.0)
            line += std::to_string(static_cast<int>(100.0 * shareDone_)) + " % (" + activity_ + ") ";
        line += std::to_string(seconds) + " s";
        const std::string blanks(length > line.size() ? length - line.size() : 0, ' ');
        length = line.size();
        std::fprintf(stderr, "\r%s%s", line.c_str(), blanks.c_str());
        std::fflush(stderr);
    }
    if (length > 0) std::fprintf(stderr, "\r%s\r", std::string(length, ' ').c_str());
}

}  // namespace Tessel::Cli
