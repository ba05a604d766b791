#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>

#include <muParser.h>

#include <tessel/data/convert.h>
#include <tessel/data/util/tables.h>

#include "data/column_access.h"

// The text is first rewritten into what muParser, which knows neither brackets nor letters beyond ASCII,
// understands: columns become variables c0, c1, ...; every other name must be a function or a constant, so
// that no text of the user can meet these variables. Then muParser compiles it once and runs it over all
// rows, reading the columns in place.

namespace Tessel::Util {
namespace {

static_assert(std::is_same_v<mu::value_type, double> && std::is_same_v<mu::string_type, std::string>,
              "the columns' memory and the rewritten text are given to muParser as they are");

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

// ---- functions; muParser's own lose NaN in min, max and sign

double sign(double x) { return std::isnan(x) ? x : x > 0.0 ? 1.0 : x < 0.0 ? -1.0 : 0.0; }
double rint(double x) {
    // Halves to even whatever the rounding mode; at 2^52 and beyond all numbers are integers.
    if (!(std::abs(x) < 0x1p52)) return x;
    const double rounded = std::round(x);
    const bool isHalf = std::abs(x - std::trunc(x)) == 0.5;
    return isHalf ? 2.0 * std::round(x / 2.0) : rounded;
}
double sum(const double* x, int n) { return std::accumulate(x, x + n, 0.0); }
double average(const double* x, int n) { return sum(x, n) / n; }
double smallest(const double* x, int n) {
    const bool hasMissing = std::any_of(x, x + n, [](double value) { return std::isnan(value); });
    return hasMissing ? kMissing : *std::min_element(x, x + n);
}
double largest(const double* x, int n) {
    const bool hasMissing = std::any_of(x, x + n, [](double value) { return std::isnan(value); });
    return hasMissing ? kMissing : *std::max_element(x, x + n);
}

struct Function {
    const char* name;
    double (*compute)(double);
};
constexpr Function kFunctions[] = {{"sin", [](double x) { return std::sin(x); }},
                                   {"cos", [](double x) { return std::cos(x); }},
                                   {"tan", [](double x) { return std::tan(x); }},
                                   {"asin", [](double x) { return std::asin(x); }},
                                   {"acos", [](double x) { return std::acos(x); }},
                                   {"atan", [](double x) { return std::atan(x); }},
                                   {"sinh", [](double x) { return std::sinh(x); }},
                                   {"cosh", [](double x) { return std::cosh(x); }},
                                   {"tanh", [](double x) { return std::tanh(x); }},
                                   {"asinh", [](double x) { return std::asinh(x); }},
                                   {"acosh", [](double x) { return std::acosh(x); }},
                                   {"atanh", [](double x) { return std::atanh(x); }},
                                   {"exp", [](double x) { return std::exp(x); }},
                                   {"log", [](double x) { return std::log(x); }},
                                   {"ln", [](double x) { return std::log(x); }},
                                   {"log2", [](double x) { return std::log2(x); }},
                                   {"log10", [](double x) { return std::log10(x); }},
                                   {"sqrt", [](double x) { return std::sqrt(x); }},
                                   {"abs", [](double x) { return std::abs(x); }},
                                   {"round", [](double x) { return std::round(x); }},
                                   {"trunc", [](double x) { return std::trunc(x); }},
                                   {"floor", [](double x) { return std::floor(x); }},
                                   {"ceil", [](double x) { return std::ceil(x); }},
                                   {"rint", rint},
                                   {"sign", sign}};

void defineFunctions(mu::Parser& parser) {
    parser.ClearFun();
    for (const Function& function : kFunctions) parser.DefineFun(function.name, function.compute);
    parser.DefineFun("atan2", static_cast<double (*)(double, double)>(std::atan2));
    parser.DefineFun("sum", sum);
    parser.DefineFun("avg", average);
    parser.DefineFun("min", smallest);
    parser.DefineFun("max", largest);
}

// ---- rewriting

bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }
bool isBlank(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\n' || c == L'\r'; }
/// Letters beyond ASCII are not told from other characters there.
bool isNameStart(wchar_t c) {
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || c == L'_' ||
           static_cast<std::uint32_t>(c) > 0x7F;
}
bool isNamePart(wchar_t c) { return isNameStart(c) || isDigit(c); }

std::string variableName(std::size_t use) {
    std::string name(1, 'c');
    return name += std::to_string(use);
}

class Rewriter {
 public:
    Rewriter(const DataFrame& table, const mu::Parser& parser, const WString& text)
        : table_(table), parser_(parser), text_(text) {}

    /// Fills `text`, `origins` and `columns`. @throws InvalidExpression, NonNumericData, DuplicateName
    void run() {
        while (position_ < text_.size()) {
            const wchar_t c = text_[position_];
            if (c == L'[')
                bracketed();
            else if (isNameStart(c))
                name();
            else if (isDigit(c) || c == L'.')
                number();
            else
                symbol(c);
        }
    }

    [[noreturn]] void fail(const std::string& reason, std::size_t position) const {
        throw InvalidExpression(Convert::toUtf8Lossy(text_),
                                reason + " at position " + std::to_string(position + 1) + ".");
    }

    /// The same with the token that stands there.
    [[noreturn]] void failOn(const std::string& what, std::size_t position) const {
        fail(what + ' ' + tokenAt(position), position);
    }

    /// The place in the expression that a place in the rewritten text stems from.
    std::size_t originOf(std::size_t position) const {
        return position < origins_.size() ? origins_[position] : text_.size();
    }
    /// The token at a place of the expression, for messages.
    std::string tokenAt(std::size_t position) const {
        if (position >= text_.size()) return "the end";
        std::size_t end = position + 1;
        if (text_[position] == L'[')
            end = std::min(text_.find(L']', position), text_.size() - 1) + 1;
        else if (isNamePart(text_[position]))
            while (end < text_.size() && isNamePart(text_[end])) ++end;
        return std::string(1, '\'') +
               Convert::toUtf8Lossy(WStringView(text_).substr(position, end - position)) + '\'';
    }

    std::string rewritten;
    std::vector<int> columns;  // of the table, in order of first use; the i-th is variable "c<i>"

 private:
    void emit(std::string_view piece, std::size_t origin) {
        rewritten += piece;
        origins_.resize(rewritten.size(), origin);
    }

    void emit(char c, std::size_t origin) { emit(std::string_view(&c, 1), origin); }

    void emitColumn(const WString& columnName, std::size_t origin) {
        const int column = table_.getColIndex(columnName);
        if (!table_.isNumeric(column)) throw NonNumericData(Convert::toUtf8Lossy(columnName));
        const auto found = std::find(columns.begin(), columns.end(), column);
        const std::string variable = variableName(static_cast<std::size_t>(found - columns.begin()));
        if (found == columns.end()) columns.push_back(column);
        emit(variable, origin);
    }

    void bracketed() {
        const std::size_t start = position_, end = text_.find(L']', start);
        if (end == WString::npos) fail("'[' without ']'", start);
        const WString columnName = text_.substr(start + 1, end - start - 1);
        if (columnName.find(L'[') != WString::npos) fail("'[' inside brackets", start);
        if (!table_.isColumn(columnName)) failOn("Unknown column", start);
        emitColumn(columnName, start);
        position_ = end + 1;
    }

    void name() {
        const std::size_t start = position_;
        while (position_ < text_.size() && isNamePart(text_[position_])) ++position_;
        const WString whole = text_.substr(start, position_ - start);
        std::size_t next = position_;
        while (next < text_.size() && isBlank(text_[next])) ++next;
        const std::string utf8 = Convert::toUtf8Lossy(whole);
        if (next < text_.size() && text_[next] == L'(') {
            if (!parser_.GetFunDef().contains(utf8)) failOn("Unknown function", start);
            emit(utf8, start);
            position_ = next;  // muParser wants the parenthesis without a blank
        } else if (table_.isColumn(whole)) {
            emitColumn(whole, start);
        } else if (parser_.GetConst().contains(utf8)) {
            emit(utf8, start);
        } else {
            failOn("Unknown name", start);
        }
    }

    /// Digits, a point and an exponent go over as a whole, or 1e5 would end in a name.
    void number() {
        const std::size_t start = position_;
        const auto digits = [&] {
            while (position_ < text_.size() && isDigit(text_[position_])) ++position_;
        };
        digits();
        if (position_ < text_.size() && text_[position_] == L'.') ++position_;
        digits();
        if (position_ < text_.size() && (text_[position_] == L'e' || text_[position_] == L'E')) {
            std::size_t exponent = position_ + 1;
            if (exponent < text_.size() && (text_[exponent] == L'+' || text_[exponent] == L'-')) ++exponent;
            if (exponent < text_.size() && isDigit(text_[exponent])) {
                position_ = exponent;
                digits();
            }
        }
        for (std::size_t i = start; i < position_; ++i) emit(static_cast<char>(text_[i]), i);
    }

    void symbol(wchar_t c) {
        constexpr WStringView kSymbols = L"+-*/^()<>=!&|?:,";
        const std::size_t start = position_++;
        if (!isBlank(c) && kSymbols.find(c) == WStringView::npos) failOn("Unexpected", start);
        const bool isPair = position_ < text_.size() && text_[position_] == L'=' &&
                            (c == L'=' || c == L'!' || c == L'<' || c == L'>');
        if (c == L'=' && !isPair) fail("Assignments are not possible: '='", start);
        emit(isBlank(c) ? ' ' : static_cast<char>(c), start);
        if (isPair) emit("=", position_++);
    }

    const DataFrame& table_;
    const mu::Parser& parser_;
    const WString& text_;
    std::size_t position_ = 0;
    std::vector<std::size_t> origins_;
};

std::string reasonOf(const mu::ParserError& error) {
    switch (error.GetCode()) {
        case mu::ecEMPTY_EXPRESSION:
            return "The expression is empty";
        case mu::ecUNEXPECTED_EOF:
            return "The expression ends too early";
        case mu::ecEXPRESSION_TOO_LONG:
            return "The expression is too long";
        case mu::ecMISSING_PARENS:
            return "A closing parenthesis is missing";
        case mu::ecTOO_MANY_PARAMS:
            return "Too many arguments of a function";
        case mu::ecTOO_FEW_PARAMS:
            return "Too few arguments of a function";
        case mu::ecMISSING_ELSE_CLAUSE:
            return "'?' without ':'";
        default:
            return "";
    }
}

std::vector<double> evaluate(mu::Parser& parser, const Rewriter& rewriter, int numRows) {
    int numResults = 0;
    parser.Eval(numResults);  // compiles
    if (numResults != 1) rewriter.fail("Unexpected ',' between expressions", 0);
    std::vector<double> results(static_cast<std::size_t>(numRows));
    if (numRows > 0) parser.Eval(results.data(), numRows);
    return results;
}

}  // namespace

DataFrameColumn calculateExpression(const DataFrame& table, const WString& expression) {
    mu::Parser parser;
    defineFunctions(parser);
    Rewriter rewriter(table, parser, expression);
    rewriter.run();

    double noRow = kMissing;
    for (std::size_t i = 0; i < rewriter.columns.size(); ++i) {
        const std::span<const double> values = ColumnAccess::cells(table, rewriter.columns[i])->numbers();
        // muParser writes to variables only in assignments, which do not get here.
        double* variable = values.empty() ? &noRow : const_cast<double*>(values.data());
        parser.DefineVar(variableName(i), variable);
    }
    try {
        parser.SetExpr(rewriter.rewritten);
        std::vector<double> results = evaluate(parser, rewriter, table.getNumRows());
        return ColumnAccess::makeColumn(expression, ColumnCells::ofNumbers(std::move(results)),
                                        ColumnAccess::rowNames(table));
    } catch (const mu::ParserError& error) {
        const std::size_t position = rewriter.originOf(static_cast<std::size_t>(error.GetPos()));
        const std::string reason = reasonOf(error);
        if (reason.empty()) rewriter.failOn("Unexpected", position);
        rewriter.fail(reason, position);
    }
}

}  // namespace Tessel::Util
