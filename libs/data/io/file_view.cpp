#include "data/io/file_view.h"

#include <exception>
#include <filesystem>
#include <system_error>

#include <boost/interprocess/file_mapping.hpp>
#include <boost/interprocess/mapped_region.hpp>

#include "data/files.h"

namespace Tessel::IO {
namespace {

namespace bip = boost::interprocess;

/// Below this size reading is as fast as mapping.
constexpr std::uintmax_t kMappingSize = 1 << 16;

}  // namespace

struct FileView::Mapping {
    explicit Mapping(const std::filesystem::path& path)
        : file(path.string().c_str(), bip::read_only), region(file, bip::read_only) {}
    bip::file_mapping file;
    bip::mapped_region region;
};

FileView::FileView(const WString& path) {
    const std::filesystem::path source = Files::toPath(path);
    std::error_code error;
    if (std::filesystem::is_regular_file(source, error) &&
        std::filesystem::file_size(source, error) >= kMappingSize && !error) {
        try {
            mapping_ = std::make_unique<const Mapping>(source);
            bytes_ = {static_cast<const char*>(mapping_->region.get_address()), mapping_->region.get_size()};
            return;
        } catch (const std::exception&) {
            // What cannot be mapped, be it for the file system or the letters of its path, can be read.
        }
    }
    copy_ = Files::readBytes(path);
    bytes_ = copy_;
}

FileView::~FileView() = default;

}  // namespace Tessel::IO
