#pragma once

#include "framework/parameter.h"

namespace Tessel::Ensemble {

/// The parameter of every ensemble.
class IParameters {
 public:
    BoundedParameter<int> numWeakLearners{L"numWeakLearners", L"#Weak Learners", 10, 1, kNoLimit};
};

/// The parameter of ensembles of bootstrap samples.
class IBootstrap {
 public:
    BoundedParameter<int> bootstrapSeed{L"bootstrapSeed", L"Bootstrap Seed", 12345,
                                        std::numeric_limits<int>::min(), kNoLimit};
};

}  // namespace Tessel::Ensemble
