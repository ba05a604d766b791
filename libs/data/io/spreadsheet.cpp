#include "data/io/spreadsheet.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <random>
#include <set>
#include <stdexcept>
#include <system_error>

#include <xlsxwriter.h>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>

#include "data/column_access.h"
#include "data/files.h"

namespace Tessel::IO {
namespace {

constexpr std::size_t kMaxRows = LXW_ROW_MAX, kMaxColumns = LXW_COL_MAX, kMaxText = 32767;
constexpr std::size_t kMaxSheetName = LXW_SHEETNAME_MAX;

/// The length in UTF-16 units, in which spreadsheets count.
std::size_t numUnits(WStringView text) {
    return text.size() + static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](wchar_t c) {
               return static_cast<std::uint32_t>(c) > 0xFFFF;
           }));
}

WString cutTo(WString text, std::size_t length) {
    while (numUnits(text) > length) text.pop_back();
    // No half of a pair of units may stay behind.
    if (!text.empty() && text.back() >= 0xD800 && text.back() <= 0xDBFF) text.pop_back();
    return text;
}

/// Sheets whose names differ only in case are the same to a spreadsheet.
WString folded(WString text) {
    for (wchar_t& c : text)
        if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
    return text;
}

WString allowedName(WString name) {
    for (wchar_t& c : name)
        if (c < L' ' || WStringView(L"[]:*?/\\").find(c) != WStringView::npos) c = L'_';
    name = cutTo(std::move(name), kMaxSheetName);
    if (name.empty()) return L"Sheet";
    if (name.front() == L'\'') name.front() = L'_';
    if (name.back() == L'\'') name.back() = L'_';
    return folded(name) == L"history" ? name + L'_' : name;  // a name that spreadsheets keep for themselves
}

void requireRoom(const DataFrame& table, bool withRowNames) {
    const auto limit = [](const char* what, std::size_t actual, std::size_t most) {
        if (actual > most)
            throw ConstraintViolation(what, "a sheet holds at most " + std::to_string(most) + " and not " +
                                                std::to_string(actual) + ".");
    };
    const auto requireText = [&](const WString& text) {
        limit("Length of text in a cell", numUnits(text), kMaxText);
    };
    const auto numRows = static_cast<std::size_t>(table.getNumRows());
    limit("Number of rows, header included", numRows + 1, kMaxRows);
    limit("Number of columns", static_cast<std::size_t>(table.getNumCols()) + (withRowNames ? 1 : 0),
          kMaxColumns);
    for (int column = 0; column < table.getNumCols(); ++column) {
        requireText(table.getColName(column));
        const ColumnCells& cells = *ColumnAccess::cells(table, column);
        if (cells.isNumeric()) continue;
        for (const std::int32_t code : cells.presentCodes()) requireText(cells.dictionary()[code]);
    }
    if (withRowNames)
        for (int row = 0; row < table.getNumRows(); ++row) requireText(table.getRowName(row));
}

bool isWritten(lxw_error error) { return error == LXW_NO_ERROR; }

bool writeText(lxw_worksheet* sheet, lxw_row_t row, lxw_col_t column, const WString& text) {
    if (text.empty()) return true;
    return isWritten(worksheet_write_string(sheet, row, column, Convert::toUtf8(text).c_str(), nullptr));
}

bool writeCell(lxw_worksheet* sheet, lxw_row_t sheetRow, lxw_col_t column, const ColumnCells& cells,
               int row) {
    if (cells.isMissing(row)) return true;
    if (cells.isNumeric() && std::isfinite(cells.number(row)))
        return isWritten(worksheet_write_number(sheet, sheetRow, column, cells.number(row), nullptr));
    return writeText(sheet, sheetRow, column, cells.text(row));
}

bool writeSheet(lxw_worksheet* sheet, const DataFrame& table, bool withRowNames) {
    const auto firstColumn = static_cast<lxw_col_t>(withRowNames ? 1 : 0);
    const auto sheetColumn = [&](int column) { return static_cast<lxw_col_t>(firstColumn + column); };
    bool isDone = true;
    for (int column = 0; column < table.getNumCols(); ++column)
        isDone = isDone && writeText(sheet, 0, sheetColumn(column), table.getColName(column));
    // Row after row: the sheet keeps only the current one in memory.
    for (int row = 0; isDone && row < table.getNumRows(); ++row) {
        const auto sheetRow = static_cast<lxw_row_t>(row + 1);
        if (withRowNames) isDone = writeText(sheet, sheetRow, 0, table.getRowName(row));
        for (int column = 0; isDone && column < table.getNumCols(); ++column)
            isDone =
                writeCell(sheet, sheetRow, sheetColumn(column), *ColumnAccess::cells(table, column), row);
    }
    return isDone;
}

/// A file of the temporary folder that lives as long as this object.
struct ScratchFile {
    ScratchFile() {
        static std::atomic<std::uint32_t> counter{0};
        static const std::uint32_t process = std::random_device{}();
        path = std::filesystem::temp_directory_path() /
               ("tessel-" + std::to_string(process) + "-" + std::to_string(counter++) + ".xlsx");
    }
    ~ScratchFile() {
        std::error_code error;
        std::filesystem::remove(path, error);
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    std::filesystem::path path;
};

}  // namespace

std::vector<WString> sheetNames(const DataFrameVector& tables) {
    std::vector<WString> names;
    std::set<WString> taken;
    for (const DataFrame& table : tables) {
        const WString wanted = allowedName(table.getName());
        WString name =
            wanted == L"Sheet" ? wanted + Convert::toString(static_cast<int>(names.size()) + 1) : wanted;
        for (int number = 2; !taken.insert(folded(name)).second; ++number) {
            const WString suffix = L" (" + Convert::toString(number) + L")";
            name = cutTo(wanted, kMaxSheetName - suffix.size()) + suffix;
        }
        names.push_back(name);
    }
    return names;
}

std::string makeWorkbook(const DataFrameVector& tables, bool withRowNames) {
    for (const DataFrame& table : tables) requireRoom(table, withRowNames);
    const std::vector<WString> names = sheetNames(tables);
    const ScratchFile scratch;
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    const std::string path = scratch.path.string();
    lxw_workbook* workbook = workbook_new_opt(path.c_str(), &options);
    if (workbook == nullptr) throw std::runtime_error("no memory for a workbook");
    bool isDone = true;
    std::exception_ptr failure;
    try {
        for (std::size_t i = 0; isDone && i < tables.size(); ++i) {
            lxw_worksheet* sheet = workbook_add_worksheet(workbook, Convert::toUtf8(names[i]).c_str());
            isDone = sheet != nullptr && writeSheet(sheet, tables[i], withRowNames);
        }
    } catch (...) {
        failure = std::current_exception();
    }
    isDone = isWritten(workbook_close(workbook)) && isDone;
    if (failure) std::rethrow_exception(failure);
    if (!isDone) throw std::runtime_error("the workbook cannot be made");
    return Files::readBytes(Convert::fromUtf8(path));
}

}  // namespace Tessel::IO
