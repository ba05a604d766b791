#pragma once

#include <tessel/evaluator/metrics.h>

// Twenty rows of three classes with tied scores and uneven weights. The reference values for them in the
// tests are from scikit-learn 1.2.1 (Python 3.11, NumPy 1.24.2), success class "a".

namespace Tessel::Samples {

/// One text per letter; a blank is a missing label.
inline StringVector letters(const WString& text) {
    StringVector labels;
    for (const wchar_t letter : text) labels.push_back(letter == L' ' ? WString() : WString(1, letter));
    return labels;
}

inline const StringVector actual = letters(L"aabbccabcabbcaabcbac");
inline const StringVector predicted = letters(L"abbbccaccabbaaabbbcc");
inline const Vector scores{.9, .4,  .35, .8, .1, .4, .7,  .4, .2,  .95,
                           .6, .35, .05, .9, .8, .4, .15, .5, .55, .3};
inline const Vector weights{1, 2, .5, 1, 3, .25, 1, 1, 2, .75, 1.5, 1, 1, .1, 2, 1, 1, .3, 1, 1};

}  // namespace Tessel::Samples
