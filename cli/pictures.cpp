#include "pictures.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <vector>

namespace Tessel::Cli {
namespace {

constexpr int kPanelsPerRow = 3;
constexpr int kPanelWidth = 300, kPanelHeight = 220;
// Of a panel, the frame around what is drawn.
constexpr double kLeft = 20.0, kTop = 34.0, kRight = 280.0, kBottom = 190.0;
/// How far the picture shows more than the data, as a share of their range.
constexpr double kMargin = 0.06;
/// A density may rise above all bars, but not so that these cannot be seen.
constexpr double kHighestCurve = 1.6;

constexpr const char* kStyle =
    "<style>text{font:12px sans-serif;fill:#333}.name{font-weight:bold}.bar{fill:#9db8d2;stroke:#fff;"
    "stroke-width:.5}.density{fill:none;stroke:#b3361e;stroke-width:1.8}.axis{stroke:#888}</style>\n";

std::string number(double value) { return Convert::toUtf8(Convert::toString(value, 2)); }

/// A number of the data, for people.
std::string label(double value) {
    std::array<char, 32> text;
    return {text.data(),
            std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 6).ptr};
}

/// Names of columns are anybody's text; XML has no control characters.
std::string escaped(const WString& text) {
    std::string result;
    for (const char c : Convert::toUtf8Lossy(text)) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '"')
            result += "&quot;";
        else
            result += c >= 0 && c < ' ' ? ' ' : c;
    }
    return result;
}

/// The finite numbers of a column in ascending order.
std::vector<double> sortedValues(const DataFrameColumn& column) {
    std::vector<double> values;
    for (const double value : column.values())
        if (std::isfinite(value)) values.push_back(value);
    std::sort(values.begin(), values.end());
    return values;
}

/// Bins of equal width from the smallest to the largest value, with densities as heights.
struct Histogram {
    double begin = 0.0, width = 1.0;
    std::vector<double> heights;

    double highest() const { return *std::max_element(heights.begin(), heights.end()); }
};

/// The width of D. Freedman & P. Diaconis, Zeitschrift fuer Wahrscheinlichkeitstheorie 57 (1981) 453-476,
/// twice the interquartile range by the cube root of the number of values, for 5 to 60 bins.
/// @param sorted  at least two different values
Histogram histogramOf(const std::vector<double>& sorted) {
    const auto n = static_cast<double>(sorted.size());
    const double range = sorted.back() - sorted.front();
    const double quartiles = sorted[sorted.size() * 3 / 4] - sorted[sorted.size() / 4];
    const double wanted = range / (2.0 * quartiles / std::cbrt(n));  // infinite without quartiles' distance
    const auto numBins =
        static_cast<std::size_t>(std::isfinite(wanted) ? std::clamp(wanted, 5.0, 60.0) : 20.0);
    Histogram histogram{sorted.front(), range / static_cast<double>(numBins), std::vector<double>(numBins)};
    for (const double value : sorted) {
        const double position = (value - sorted.front()) / range * static_cast<double>(numBins);
        histogram.heights[std::min(static_cast<std::size_t>(position), numBins - 1)] +=
            1.0 / (n * histogram.width);
    }
    return histogram;
}

/// From numbers to places in a panel.
struct Scale {
    double smallest, largest, highest;

    double x(double value) const {
        return kLeft + (kRight - kLeft) * ((value - smallest) / (largest - smallest));
    }
    double y(double density) const { return kBottom - (kBottom - kTop) * (density / highest); }
};

std::string bars(const Histogram& histogram, const Scale& scale) {
    std::string shapes;
    for (std::size_t i = 0; i < histogram.heights.size(); ++i) {
        if (histogram.heights[i] == 0.0) continue;
        const double left = scale.x(histogram.begin + static_cast<double>(i) * histogram.width);
        const double right = scale.x(histogram.begin + static_cast<double>(i + 1) * histogram.width);
        const double top = scale.y(histogram.heights[i]);
        shapes += "<rect class=\"bar\" x=\"" + number(left) + "\" y=\"" + number(top) + "\" width=\"" +
                  number(right - left) + "\" height=\"" + number(kBottom - top) + "\"/>\n";
    }
    return shapes;
}

std::string densityLine(const DataFrame& curve, const Scale& scale) {
    // Held within twice the panel, which shows its part of them, so that no number is beyond what viewers
    // read.
    const double range = scale.largest - scale.smallest;
    std::string points;
    for (int row = 0; row < curve.getNumRows(); ++row) {
        const double x =
            std::clamp(curve(row, L"Inverse CDF").toDouble(), scale.smallest - range, scale.largest + range);
        const double y = std::min(curve(row, L"Density").toDouble(), 2.0 * scale.highest);
        if (row > 0) points += ' ';
        points += number(scale.x(x)) + "," + number(scale.y(y));
    }
    if (points.empty()) return {};
    return "<polyline class=\"density\" points=\"" + points + "\"/>\n";
}

/// What is drawn of one column, from (0, 0) on; empty without two different values.
std::string panel(const DataFrameColumn& column, const DataFrame& curve) {
    const std::vector<double> values = sortedValues(column);
    if (values.empty() || values.front() == values.back()) return {};
    const double range = values.back() - values.front();
    if (!std::isfinite(range)) return {};
    const Histogram histogram = histogramOf(values);
    Scale scale{values.front() - kMargin * range, values.back() + kMargin * range, histogram.highest()};
    double highestDensity = 0.0;
    for (int row = 0; row < curve.getNumRows(); ++row)
        highestDensity = std::max(highestDensity, curve(row, L"Density").toDouble());
    scale.highest = std::max(scale.highest, std::min(highestDensity, kHighestCurve * scale.highest));

    const std::string bottom = number(kBottom), labels = number(kBottom + 16.0);
    return "<text class=\"name\" x=\"" + number(kLeft) + "\" y=\"20\">" + escaped(column.getColName()) +
           "</text>\n<svg x=\"" + number(kLeft) + "\" y=\"" + number(kTop) + "\" width=\"" +
           number(kRight - kLeft) + "\" height=\"" + number(kBottom - kTop) + "\" viewBox=\"" +
           number(kLeft) + " " + number(kTop) + " " + number(kRight - kLeft) + " " + number(kBottom - kTop) +
           "\">\n" + bars(histogram, scale) + densityLine(curve, scale) +
           "</svg>\n<line class=\"axis\" x1=\"" + number(kLeft) + "\" y1=\"" + bottom + "\" x2=\"" +
           number(kRight) + "\" y2=\"" + bottom + "\"/>\n<text x=\"" + number(scale.x(values.front())) +
           "\" y=\"" + labels + "\">" + label(values.front()) + "</text>\n<text text-anchor=\"end\" x=\"" +
           number(scale.x(values.back())) + "\" y=\"" + labels + "\">" + label(values.back()) + "</text>\n";
}

}  // namespace

std::string picturesOfMargins(const DataFrame& table, const SyntheticDataGenerator& generator) {
    std::string panels;
    int numPanels = 0;
    for (const WString& name : generator.getColNames()) {
        if (!generator.isMetalogFitted(name)) continue;
        const std::string drawn = panel(table(Util::all, name), generator.getMetalogCurve(name));
        if (drawn.empty()) continue;
        panels += "<g transform=\"translate(" + std::to_string(numPanels % kPanelsPerRow * kPanelWidth) +
                  "," + std::to_string(numPanels / kPanelsPerRow * kPanelHeight) + ")\">\n" + drawn +
                  "</g>\n";
        ++numPanels;
    }
    const int width = kPanelWidth * std::clamp(numPanels, 1, kPanelsPerRow);
    const int height = kPanelHeight * std::max(1, (numPanels + kPanelsPerRow - 1) / kPanelsPerRow);
    const std::string size = std::to_string(width) + " " + std::to_string(height);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + std::to_string(width) + "\" height=\"" +
           std::to_string(height) + "\" viewBox=\"0 0 " + size +
           "\" role=\"img\">\n<title>Histograms of the columns under their fitted densities</title>\n" +
           kStyle + "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n" + panels + "</svg>\n";
}

}  // namespace Tessel::Cli
