#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/synthetic_data_generator.h>

namespace {

using namespace Tessel;

/// What was read generates, reports, and survives its own text.
void use(SyntheticDataGenerator& generator) {
    const WString text = generator.toLadon();
    SyntheticDataGenerator again;
    again.fromLadonString(text);
    if (again.toLadon() != text) std::abort();
    generator.toDataFrameVector();
    generator.setSampleSize(64);
    const DataFrame sample = generator.generate();
    const bool isWhole = sample.getNumRows() == 64 && sample.getColNames() == generator.getColNames();
    if (!sample.empty() && !isWhole) std::abort();
    if (sample.empty() && generator.getLog().empty()) std::abort();
}

}  // namespace

// Entry of a fuzzer for texts of synthetic data generators. Whatever the text, the outcome is a generator
// that can be used or a Tessel::Exception.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        SyntheticDataGenerator generator;
        generator.fromLadonString(
            Convert::fromUtf8(std::string_view(reinterpret_cast<const char*>(data), size)));
        use(generator);
    } catch (const Exception&) {
    }
    return 0;
}
