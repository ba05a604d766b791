#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include <rapidxml/rapidxml.hpp>

#include <tessel/data/convert.h>
#include <tessel/random_trees.h>
#include <tessel/scoring/facades.h>

// How long the text of a forest takes to write, to read and to score with, beside a bare parse of its XML.
//
//     model_text_benchmark [rows = 20000] [trees = 100]

namespace {

using namespace Tessel;

double secondsOf(const auto& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Noise that no tree can learn makes large trees.
void makeTable(int numRows, DataFrame& features, DataFrameColumn& target) {
    unsigned state = 1;
    const auto uniform = [&] {
        state = state * 1664525u + 1013904223u;
        return static_cast<double>(state >> 8) / 16777216.0;
    };
    for (int column = 0; column < 10; ++column) {
        Vector values;
        for (int row = 0; row < numRows; ++row) values.push_back(uniform());
        features.append(DataFrameColumn(L"x" + std::to_wstring(column), std::move(values)));
    }
    StringVector labels;
    for (int row = 0; row < numRows; ++row)
        labels.push_back(features(row, 0).toDouble() + uniform() > 1.0 ? L"yes" : L"no");
    target = DataFrameColumn(L"label", std::move(labels));
}

}  // namespace

int main(int argc, char** argv) {
    const int numRows = argc > 1 ? std::atoi(argv[1]) : 20000, numTrees = argc > 2 ? std::atoi(argv[2]) : 100;
    DataFrame features;
    DataFrameColumn target(L"label", StringVector());
    makeTable(numRows, features, target);
    const auto model =
        Classification::RandomTrees::Estimator().setNumWeakLearners(numTrees).fit(features, target);

    WString text;
    const double write = secondsOf([&] { text = model.toPMML(); });
    std::printf("text      %8.1f MB as UTF-8, written in %.3f s\n",
                static_cast<double>(Convert::toUtf8(text).size()) / 1e6, write);
    // In turns, so that both find memory that was used before.
    double parse = 1e300, read = 1e300;
    Scoring::Classifier loaded;
    for (int round = 0; round < 5; ++round) {
        std::vector<wchar_t> characters(text.begin(), text.end());
        characters.push_back(0);
        parse = std::min(parse, secondsOf([&] {
                             rapidxml::xml_document<wchar_t> bare;
                             bare.parse<0>(characters.data());
                         }));
        WString copy = text;
        read = std::min(read, secondsOf([&] { loaded.fromPMMLString(std::move(copy)); }));
    }
    std::printf("reading   %8.3f s, %.2f times a bare parse (%.3f s)\n", read, read / parse, parse);
    model.predict(features);
    const double inMemory = secondsOf([&] { model.predict(features); });
    const double fromText = secondsOf([&] { loaded.predict(features); });
    std::printf("scoring   %8.3f s, %.2f times the fitted model (%.3f s)\n", fromText, fromText / inMemory,
                inMemory);
    WString json;
    const double writeJson = secondsOf([&] { json = model.toJSON(); });
    const double readJson = secondsOf([&] { loaded.fromJSONString(json); });
    std::printf("JSON      %8.1f million characters, written in %.3f s, read in %.3f s\n",
                static_cast<double>(json.size()) / 1e6, writeJson, readJson);
    return 0;
}
