#include <algorithm>

#include <tessel/data/convert.h>
#include <tessel/data/data_frame_vector.h>

namespace Tessel {
namespace {

template <class Tables>
auto findTable(Tables& tables, const WString& name) {
    return std::find_if(tables.begin(), tables.end(),
                        [&](const DataFrame& table) { return table.getName() == name; });
}

template <class Tables>
auto& tableNamed(Tables& tables, const WString& name) {
    const auto found = findTable(tables, name);
    if (found == tables.end()) throw NonExistingNamedIndex(Convert::toUtf8Lossy(name));
    return *found;
}

template <class Tables>
auto& tableAt(Tables& tables, std::size_t position) {
    if (position >= tables.size())
        throw IndexOutOfRange(static_cast<std::int64_t>(position), static_cast<std::int64_t>(tables.size()));
    return tables[position];
}

}  // namespace

void DataFrameVector::append(const DataFrameVector& tables) {
    if (&tables == this) return append(DataFrameVector(tables));
    tables_.insert(tables_.end(), tables.begin(), tables.end());
}

void DataFrameVector::remove(const WString& name) {
    const auto found = findTable(tables_, name);
    if (found == tables_.end()) throw NonExistingNamedIndex(Convert::toUtf8Lossy(name));
    tables_.erase(found);
}

bool DataFrameVector::exists(const WString& name) const { return findTable(tables_, name) != tables_.end(); }
DataFrame& DataFrameVector::at(const WString& name) { return tableNamed(tables_, name); }
const DataFrame& DataFrameVector::at(const WString& name) const { return tableNamed(tables_, name); }
DataFrame& DataFrameVector::at(std::size_t position) { return tableAt(tables_, position); }
const DataFrame& DataFrameVector::at(std::size_t position) const { return tableAt(tables_, position); }

WString DataFrameVector::toString() const {
    WString text;
    for (const DataFrame& table : tables_) {
        if (!text.empty()) text += L'\n';
        text += table.toString();
    }
    return text;
}

}  // namespace Tessel
