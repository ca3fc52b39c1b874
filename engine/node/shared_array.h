/// The arrays of a mesh: scenes hold copies of what they are given, and a copy of ten million triangles takes its time and place.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

#include "engine/common/large_vector.h"

namespace nemra::node {

/// Numbers that copies share until one of them is changed. As with a vector, one that is read by several threads mustn't be
/// changed by any.
template <class Number>
class SharedArray {
public:
    using Vector = LargeVector<Number>;
    using value_type = Number;

    SharedArray() = default;
    SharedArray(Vector numbers) : numbers_(std::make_shared<Vector>(std::move(numbers))) {}
    SharedArray(const std::vector<Number>& numbers) : SharedArray(Vector(numbers.begin(), numbers.end())) {}
    SharedArray(std::initializer_list<Number> numbers) : SharedArray(Vector(numbers)) {}

    const Number* data() const noexcept { return numbers_ ? numbers_->data() : nullptr; }
    std::size_t size() const noexcept { return numbers_ ? numbers_->size() : 0; }
    bool empty() const noexcept { return size() == 0; }
    const Number* begin() const noexcept { return data(); }
    const Number* end() const noexcept { return data() + size(); }
    const Number& operator[](std::size_t at) const noexcept { return (*numbers_)[at]; }
    bool operator==(const SharedArray& other) const {
        return numbers_ == other.numbers_ || std::equal(begin(), end(), other.begin(), other.end());
    }

    /// The numbers to be changed, no longer shared with anybody.
    Vector& edit() {
        if (!numbers_ || numbers_.use_count() > 1) numbers_ = std::make_shared<Vector>(begin(), end());
        return *numbers_;
    }

    // What is changed most often, as a vector has it.
    void push_back(Number number) { edit().push_back(number); }
    void clear() noexcept { numbers_.reset(); }
    void resize(std::size_t count) { edit().resize(count); }
    void assign(std::size_t count, Number number) { edit().assign(count, number); }
    template <class Iterator>
    void insert(const Number* at, Iterator first, Iterator last) {
        const auto place = at - begin();
        edit().insert(numbers_->begin() + place, first, last);
    }
    void insert(const Number* at, std::initializer_list<Number> numbers) { insert(at, numbers.begin(), numbers.end()); }

private:
    std::shared_ptr<Vector> numbers_;
};

}  // namespace nemra::node
