#pragma once

#include <cstddef>
#include <vector>

#include "engine/crew.h"
#include "framework/schema.h"

namespace Tessel::Ensemble {

/// Runs work(columns, begin, end) for blocks of rows by a crew: `columns` are those rows of the features. A
/// block is scored by all learners of an ensemble in one thread, so that the threads meet once and not for
/// every learner, and the block stays in the memory near the processor.
template <class Work>
void forEachRowBlock(Engine::Crew& crew, const std::vector<FeatureColumn>& features, std::size_t numRows,
                     Work&& work) {
    if (numRows <= Engine::kSizeOfStretches) return work(features, std::size_t{0}, numRows);
    Engine::forEachStretch(crew, numRows, [&](std::size_t begin, std::size_t end) {
        std::vector<FeatureColumn> columns;
        columns.reserve(features.size());
        for (const FeatureColumn& feature : features) columns.push_back(feature.rows(begin, end - begin));
        work(columns, begin, end);
    });
}

}  // namespace Tessel::Ensemble
