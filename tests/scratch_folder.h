#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include <tessel/data/types.h>

namespace Tessel {

/// An own folder for the files of a test, removed in the end. Tests run side by side.
class ScratchFolder {
 public:
    ScratchFolder() {
        do {
            path =
                std::filesystem::temp_directory_path() / ("tessel_" + std::to_string(std::random_device{}()));
        } while (!std::filesystem::create_directory(path));  // until it is nobody else's
    }
    ~ScratchFolder() { std::filesystem::remove_all(path); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    void put(const char* name, const std::string& bytes) const {
        std::ofstream(path / name, std::ios::binary) << bytes;
    }
    WString wide(const char* name = "") const { return (path / name).wstring(); }

    std::filesystem::path path;
};

}  // namespace Tessel
