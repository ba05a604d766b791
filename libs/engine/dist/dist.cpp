#include "engine/dist/dist.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>

#include "data/number_text.h"
#include "data/util/compensated_sum.h"

namespace Tessel::Engine::Dist {
namespace {

/// The text of "%g", whatever the locale.
void appendNumber(std::wstring& text, double value) {
    const NumberText digits(value, std::chars_format::general, 6);
    text.append(digits.begin(), digits.end());
}

template <class Function>
void forEachNumber(std::span<const double> x, std::span<double> result, Function&& function) {
    assert(x.size() == result.size());
    std::transform(x.begin(), x.end(), result.begin(), function);
}

}  // namespace

std::wstring CDist::formulaStart(std::wstring_view name, std::span<const double> parameters) {
    std::wstring text(name);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        text += i == 0 ? L"(" : L", ";
        appendNumber(text, parameters[i]);
    }
    return text;
}

std::wstring CDist::formulaText() const {
    if (!isValid()) return {};
    std::wstring text = formulaStart();
    const bool isOpen = text.find(L'(') != std::wstring::npos;
    if (shift_ != 0.0) {
        text += isOpen ? L", LyrShift(" : L"(LyrShift(";
        appendNumber(text, shift_);
        text += L')';
    }
    if (isOpen || shift_ != 0.0) text += L')';
    if (text.size() >= kFormulaSize) text.resize(kFormulaSize - 1);
    return text;
}

void CDist::formulaText(wchar_t* buffer) const {
    if (buffer == nullptr) return;
    const std::wstring text = formulaText();
    std::copy(text.begin(), text.end(), buffer);
    buffer[text.size()] = L'\0';
}

void CDist::pdfs(std::span<const double> x, std::span<double> result) const {
    forEachNumber(x, result, [this](double value) { return pdf(value); });
}
void CDist::logPdfs(std::span<const double> x, std::span<double> result) const {
    forEachNumber(x, result, [this](double value) { return logPdf(value); });
}
void CDist::cdfs(std::span<const double> x, std::span<double> result) const {
    forEachNumber(x, result, [this](double value) { return cdf(value); });
}
void CDist::complementaryCdfs(std::span<const double> x, std::span<double> result) const {
    forEachNumber(x, result, [this](double value) { return complementaryCdf(value); });
}
void CDist::inverseCdfs(std::span<const double> p, std::span<double> result) const {
    forEachNumber(p, result, [this](double value) { return inverseCdf(value); });
}

double CDist::standardDeviation() const { return std::sqrt(variance()); }
double CDist::kurtosis() const { return excessKurtosis() + 3.0; }
double CDist::median() const { return inverseCdf(0.5); }

double CDist::logLikelihood(std::span<const double> x) const {
    // By blocks, so that the densities of a long sample need no memory of their own.
    std::array<double, 512> block;
    Numeric::CompensatedSum sum;
    for (std::size_t begin = 0; begin < x.size(); begin += block.size()) {
        const std::size_t count = std::min(block.size(), x.size() - begin);
        logPdfs(x.subspan(begin, count), std::span(block).first(count));
        sum.add(Numeric::compensatedSumOf(count, [&block](std::size_t i) { return block[i]; }));
    }
    return sum.value();
}

bool CDist::isSampleAdmissible(std::size_t n, const double* values) const {
    return n > 0 && values != nullptr && std::all_of(values, values + n, [this](double value) {
               return std::isfinite(value) && dataDomain_.contains(value - shift_);
           });
}

}  // namespace Tessel::Engine::Dist
