#pragma once

#include <vector>

#include <tessel/data/data_frame.h>

namespace Tessel {

/// An ordered collection of tables, each addressed by position or by its name: the form in which models
/// report themselves. Of several tables with one name the first is addressed.
class TESSEL_API DataFrameVector {
 public:
    using iterator = std::vector<DataFrame>::iterator;
    using const_iterator = std::vector<DataFrame>::const_iterator;

    DataFrameVector() = default;
    explicit DataFrameVector(std::size_t size) : tables_(size) {}
    DataFrameVector(const DataFrame& first, const DataFrame& second) : tables_{first, second} {}

    const WString& getName() const { return name_; }
    void setName(WString name) { name_ = std::move(name); }

    std::size_t size() const { return tables_.size(); }
    bool empty() const { return tables_.empty(); }
    void push_back(DataFrame table) { tables_.push_back(std::move(table)); }
    void append(const DataFrameVector& tables);
    /// @throws NonExistingNamedIndex
    void remove(const WString& name);
    bool exists(const WString& name) const;

    /// @throws NonExistingNamedIndex
    DataFrame& at(const WString& name);
    const DataFrame& at(const WString& name) const;
    DataFrame& operator[](const WString& name) { return at(name); }
    const DataFrame& operator[](const WString& name) const { return at(name); }
    /// @throws IndexOutOfRange
    DataFrame& at(std::size_t position);
    const DataFrame& at(std::size_t position) const;
    DataFrame& operator[](std::size_t position) { return at(position); }
    const DataFrame& operator[](std::size_t position) const { return at(position); }

    iterator begin() { return tables_.begin(); }
    iterator end() { return tables_.end(); }
    const_iterator begin() const { return tables_.begin(); }
    const_iterator end() const { return tables_.end(); }

    /// The tables one below the other, each under its name, for people.
    WString toString() const;

 private:
    WString name_;
    std::vector<DataFrame> tables_;
};

}  // namespace Tessel
