#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <tessel/data/types.h>

namespace Tessel::IO {

/// The bytes of a file for reading, mapped where the system can.
class FileView {
 public:
    /// @throws FileNotFound
    explicit FileView(const WString& path);
    ~FileView();
    FileView(const FileView&) = delete;
    FileView& operator=(const FileView&) = delete;

    std::string_view bytes() const { return bytes_; }

 private:
    struct Mapping;
    std::unique_ptr<const Mapping> mapping_;
    std::string copy_;
    std::string_view bytes_;
};

}  // namespace Tessel::IO
