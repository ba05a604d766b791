#include "../../../fuzz/reader_fuzz.cpp"

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "data/io/io_testing.h"

namespace Tessel {
namespace {

void run(const std::string& input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

// Any other exception, or a fault that a sanitizer sees, ends the test program.
TEST(ReaderFuzzTest, survivesTheCorpusAndItsMutations) {
    std::vector<std::string> inputs;
    for (const auto& file : std::filesystem::directory_iterator(sourcePath("fuzz/corpus/reader")))
        inputs.push_back(bytesOf(file.path()));
    ASSERT_FALSE(inputs.empty());
    std::sort(inputs.begin(), inputs.end());
    std::mt19937_64 random(1);
    const std::string special = "\",;\t\r\n-.e0NA\xFF\xC3";
    for (const std::string& input : inputs) {
        run(input);
        for (int i = 0; i < 1500; ++i) {
            std::string mutated = input;
            for (std::uint64_t n = 1 + random() % 4; n > 0; --n) {
                const std::size_t at = random() % (mutated.size() + 1);
                const std::string& other = inputs[random() % inputs.size()];
                switch (random() % 4) {
                    case 0:
                        mutated.insert(at, 1, special[random() % special.size()]);
                        break;
                    case 1:
                        mutated.erase(at, random() % 5);
                        break;
                    case 2:
                        mutated.insert(at, other.substr(random() % other.size()));
                        break;
                    default:
                        if (at < mutated.size()) mutated[at] = static_cast<char>(random());
                }
            }
            run(mutated);
        }
    }
}

}  // namespace
}  // namespace Tessel
