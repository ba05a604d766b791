#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include <tessel/data/errors.h>
#include <tessel/data/types.h>

namespace Tessel {

/// What `StringVector`, `IntVector` and `Vector` share: a resizable sequence with an optional name.
/// Positions count from 0. Equality compares the elements, not the names.
template <class T>
class NamedSequence {
 public:
    using value_type = T;
    using iterator = typename std::vector<T>::iterator;
    using const_iterator = typename std::vector<T>::const_iterator;

    NamedSequence() = default;
    explicit NamedSequence(std::size_t size) : elements_(size) {}
    NamedSequence(std::size_t size, const T& fill) : elements_(size, fill) {}
    NamedSequence(std::initializer_list<T> elements) : elements_(elements) {}
    /// Takes over the elements without copying them.
    explicit NamedSequence(std::vector<T> elements) : elements_(std::move(elements)) {}
    /// Two string literals between braces are two texts and no range of characters.
    template <std::input_iterator Iterator>
    requires(!std::is_same_v<std::iter_value_t<Iterator>, wchar_t>)
        NamedSequence(Iterator first, Iterator last)
        : elements_(first, last) {}

    const WString& getName() const { return name_; }
    void setName(WString name) { name_ = std::move(name); }

    std::size_t size() const { return elements_.size(); }
    bool empty() const { return elements_.empty(); }
    void resize(std::size_t size) { elements_.resize(size); }
    void resize(std::size_t size, const T& fill) { elements_.resize(size, fill); }
    void reserve(std::size_t capacity) { elements_.reserve(capacity); }
    void clear() { elements_.clear(); }

    void push_back(T value) { elements_.push_back(std::move(value)); }
    /// Adds the elements of `other`, which may be this sequence itself, behind the last one.
    void append(const NamedSequence& other) {
        if (&other == this) return append(NamedSequence(*this));
        elements_.insert(elements_.end(), other.begin(), other.end());
    }

    /// Unchecked access; `at` checks.
    T& operator[](std::size_t i) { return elements_[i]; }
    const T& operator[](std::size_t i) const { return elements_[i]; }
    /// @throws IndexOutOfRange
    T& at(std::size_t i) { return elements_[checked(i)]; }
    const T& at(std::size_t i) const { return elements_[checked(i)]; }
    /// @throws IndexOutOfRange when empty.
    T& front() { return at(0); }
    const T& front() const { return at(0); }
    T& back() { return at(size() - 1); }
    const T& back() const { return at(size() - 1); }

    iterator begin() { return elements_.begin(); }
    iterator end() { return elements_.end(); }
    const_iterator begin() const { return elements_.begin(); }
    const_iterator end() const { return elements_.end(); }
    T* data() { return elements_.data(); }
    const T* data() const { return elements_.data(); }

    /// The elements as a standard vector; from an expiring object without a copy.
    const std::vector<T>& elements() const& { return elements_; }
    std::vector<T> elements() && { return std::move(elements_); }

    bool operator==(const NamedSequence& other) const { return elements_ == other.elements_; }

 private:
    std::size_t checked(std::size_t i) const {
        if (i >= size())
            throw IndexOutOfRange(static_cast<std::int64_t>(i), static_cast<std::int64_t>(size()));
        return i;
    }

 protected:
    WString name_;
    std::vector<T> elements_;
};

/// A sequence of wide texts; an empty text is a missing value.
class TESSEL_API StringVector : public NamedSequence<WString> {
 public:
    using NamedSequence::NamedSequence;

    /// Puts `text` before the element at `position`; `position == size()` appends.
    /// @throws IndexOutOfRange
    void insert(std::size_t position, WString text);
    /// The position of the first element equal to `text`, or `size()` when there is none.
    std::size_t find(const WString& text) const;
    bool exists(const WString& text) const { return find(text) != size(); }

    /// The elements between braces, for people: {a, b, c}.
    WString toString() const;
    /// A JSON array of strings.
    WString toJson() const;
    /// Replaces the elements; the name stays.
    /// @throws MalformedJSON when the text is not an array of strings; the object is then unchanged.
    void fromJsonString(const WString& json);
};

/// A sequence of integers.
class TESSEL_API IntVector : public NamedSequence<int> {
 public:
    using NamedSequence::NamedSequence;

    /// The elements between braces, for people: {1, 2, 3}.
    WString toString() const;
};

/// A sequence of doubles; NaN is a missing value.
class TESSEL_API Vector : public NamedSequence<double> {
 public:
    using NamedSequence::NamedSequence;

    /// The elements between braces, for people: {1, 2.5, NaN}.
    WString toString() const;
    /// A JSON array of numbers in shortest round-trip form. NaN, which JSON lacks, is written as null,
    /// infinities as the strings "Infinity" and "-Infinity"; `fromJsonString` reads all of them back.
    WString toJson() const;
    /// Replaces the elements; the name stays.
    /// @throws MalformedJSON when the text is not such an array; the object is then unchanged.
    void fromJsonString(const WString& json);
};

}  // namespace Tessel
