#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Tessel::Testing {

/// Gives a fuzz target its corpus and random mutations of it, the same at every run. Anything but a return of
/// the target ends the test program: another exception than it expects, or a fault that a sanitizer sees.
/// @param corpus   folder below fuzz/corpus
/// @param special  characters that mean something in the format
inline void replay(int (*target)(const std::uint8_t*, std::size_t), const char* corpus,
                   const std::string& special) {
    const auto folder = std::filesystem::path(TESSEL_SOURCE_DIR) / "fuzz/corpus" / corpus;
    std::vector<std::string> inputs;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        std::ifstream stream(file.path(), std::ios::binary);
        inputs.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    }
    ASSERT_FALSE(inputs.empty());
    std::sort(inputs.begin(), inputs.end());
    std::mt19937_64 random(1);
    const auto run = [&](const std::string& input) {
        target(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    };
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
                        mutated.insert(at, other.substr(random() % (other.size() + 1)));
                        break;
                    default:
                        if (at < mutated.size()) mutated[at] = static_cast<char>(random());
                }
            }
            run(mutated);
        }
    }
}

}  // namespace Tessel::Testing
