#include "data/files.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <fstream>
#include <random>
#include <system_error>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>

namespace Tessel::Files {
namespace {

namespace fs = std::filesystem;

bool writeWhole(const fs::path& path, const Producer& produce) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) return false;
    produce(file);
    file.close();  // the last bytes leave the buffer here, and a full disk shows here
    return file.good();
}

/// A path beside `target` that no other writer uses, be it in this process or in another.
fs::path temporaryBeside(const fs::path& target) {
    static std::atomic<std::uint32_t> counter{0};
    static const std::uint32_t process = std::random_device{}();
    fs::path temporary = target;
    for (const auto& part : {std::string("."), std::to_string(process), std::string("-"),
                             std::to_string(counter++), std::string(".tmp")})
        temporary += part;
    return temporary;
}

bool replaceFile(const fs::path& target, const Producer& produce, const fs::file_status& status) {
    const fs::path temporary = temporaryBeside(target);
    std::error_code error;
    bool isDone = false;
    try {
        isDone = writeWhole(temporary, produce);
    } catch (...) {
        fs::remove(temporary, error);
        throw;
    }
    if (isDone && fs::exists(status)) fs::permissions(temporary, status.permissions(), error);
    if (isDone && !error) fs::rename(temporary, target, error);
    isDone = isDone && !error;
    if (!isDone) fs::remove(temporary, error);
    return isDone;
}

}  // namespace

fs::path toPath(const WString& path) {
    const std::string utf8 = Convert::toUtf8(path);
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string readBytes(const WString& path) {
    const fs::path source = toPath(path);
    std::error_code error;
    std::ifstream file(source, std::ios::binary);
    if (!file || fs::is_directory(source, error)) throw FileNotFound(Convert::toUtf8Lossy(path));

    // The size is only a hint: a pipe has none, and a file may grow meanwhile.
    const std::uintmax_t size = fs::file_size(source, error);
    std::string bytes;
    if (!error) bytes.reserve(static_cast<std::size_t>(size));
    std::array<char, 1 << 16> block;
    while (file.read(block.data(), block.size()) || file.gcount() > 0)
        bytes.append(block.data(), static_cast<std::size_t>(file.gcount()));
    if (file.bad()) throw FileNotFound(Convert::toUtf8Lossy(path));
    return bytes;
}

void write(const WString& path, const Producer& produce) {
    fs::path target = toPath(path);
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (fs::is_symlink(fs::symlink_status(target, error)) && fs::exists(status))
        target = fs::canonical(target, error);
    const bool isSpecial = fs::exists(status) && !fs::is_regular_file(status);
    const bool isWritten = isSpecial ? !fs::is_directory(status) && writeWhole(target, produce)
                                     : replaceFile(target, produce, status);
    if (!isWritten) throw UnableToWriteFile(Convert::toUtf8Lossy(path));
}

void writeBytes(const WString& path, std::string_view bytes) {
    write(path, [bytes](std::ostream& file) {
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    });
}

}  // namespace Tessel::Files
