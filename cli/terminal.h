#pragma once

#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

// What depends on the operating system, the standard streams, and the error of this program.

namespace Tessel::Cli {

/// What the user is told when a command cannot be carried out; one line of UTF-8.
class Failure : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Keeps line ends of standard input and output as they are, also where text is translated by default.
void useBinaryStreams();

/// Everything that standard input has. @throws Failure
std::string readStandardInput();

/// Writes bytes to a file, or to standard output when `path` is empty or "-". A file appears when it is
/// complete. @throws Failure
void writeBytes(const std::string& bytes, const std::string& path);

/// Notes an interrupt from the keyboard while it exists, where it would have ended the program; the next one
/// ends it. Interrupts that were ignored stay so.
class InterruptNote {
 public:
    InterruptNote();
    ~InterruptNote();
    InterruptNote(const InterruptNote&) = delete;
    InterruptNote& operator=(const InterruptNote&) = delete;

    bool isInterrupted() const;

 private:
    void (*before_)(int);  // what an interrupt did before
};

/// Tells on a terminal what takes long: a line "text ... 40 % (activity) 5 s", from the first second on and
/// until destruction.
class Progress {
 public:
    explicit Progress(std::string text);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// @param shareDone  from 0 to 1; nothing is told of it until it is first given
    void report(double shareDone, std::string activity);

 private:
    void run();

    const std::string text_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isDone_ = false;
    double shareDone_ = -1.0;
    std::string activity_;
    std::thread thread_;  // last, so that it finds all others made
};

}  // namespace Tessel::Cli
