#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <omp.h>

#include <tessel/data/convert.h>
#include <tessel/data/data_frame.h>

#include "scratch_folder.h"

// What the tests of readers and writers share.
namespace Tessel {

/// A table in one line: name, # for numeric or $ for text, and the cells, ~ for a missing one.
inline std::string shown(const DataFrame& table) {
    std::string text;
    for (int column = 0; column < table.getNumCols(); ++column) {
        if (column > 0) text += ' ';
        text += Convert::toUtf8(table.getColName(column)) + (table.isNumeric(column) ? "#[" : "$[");
        for (int row = 0; row < table.getNumRows(); ++row) {
            if (row > 0) text += '|';
            const auto cell = table(row, column);
            text += cell.isMissing() ? "~" : Convert::toUtf8(cell.toString());
        }
        text += ']';
    }
    return text;
}

inline std::filesystem::path sourcePath(const char* path) {
    return std::filesystem::path(TESSEL_SOURCE_DIR) / path;
}
inline WString sourceFile(const char* path) { return sourcePath(path).wstring(); }

inline std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Sets the number of threads while it lives.
class ThreadCount {
 public:
    explicit ThreadCount(int count) : before_(omp_get_max_threads()) { omp_set_num_threads(count); }
    ~ThreadCount() { omp_set_num_threads(before_); }
    ThreadCount(const ThreadCount&) = delete;
    ThreadCount& operator=(const ThreadCount&) = delete;

 private:
    int before_;
};

}  // namespace Tessel
