#include <cstddef>
#include <cstdint>
#include <string_view>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/data/matrix.h>
#include <tessel/decision_tree.h>
#include <tessel/naive_bayes.h>

namespace {

/// Reads a JSON text into any object that has a reader for it.
template <class Read>
void attempt(Read read) {
    try {
        read();
    } catch (const Tessel::Exception&) {
    }
}

}  // namespace

// Entry of a fuzzer for JSON and Ladon texts, for example clang++ -fsanitize=fuzzer,address. Every reader of
// such text gets the input; the outcome is an object or a Tessel::Exception.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Tessel;
    attempt([&] {
        const WString text = Convert::fromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
        attempt([&] { DataFrame().fromJsonString(text); });
        attempt([&] { Matrix().fromJsonString(text); });
        attempt([&] { Vector().fromJsonString(text); });
        attempt([&] { StringVector().fromJsonString(text); });
        attempt([&] { Classification::NaiveBayes::Estimator().fromLadonString(text); });
        attempt([&] { Classification::DecisionTree::Estimator().fromLadonString(text); });
        attempt([&] { Regression::DecisionTree::Estimator().fromLadonString(text); });
    });
    return 0;
}
