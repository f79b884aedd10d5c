#pragma once
// A growing array whose entries stand at indices 1 to upperBound(); index 0 exists and stays
// empty. This is how the program's shared lists are numbered: entry i is the i-th line, the i-th
// selected symbol, the i-th quote. Range-for walks the entries 1..upperBound() only.

#include <QtGlobal>

#include <cassert>
#include <vector>

template <typename T>
class GrowingArray {
public:
    GrowingArray() : items_(1) {}

    // The highest index in use; 0 when the array holds no entries.
    int upperBound() const { return static_cast<int>(items_.size()) - 1; }
    int count() const { return upperBound(); }
    bool isEmpty() const { return upperBound() == 0; }

    // Entry i, 1 <= i <= upperBound(). Index 0 reads as the empty entry.
    T& operator[](int i) {
        assert(i >= 0 && i <= upperBound());
        return items_[static_cast<size_t>(i)];
    }
    const T& operator[](int i) const {
        assert(i >= 0 && i <= upperBound());
        return items_[static_cast<size_t>(i)];
    }

    // Grows or shrinks to `upper` entries, keeping the contents ("ReDim Preserve").
    void resizeTo(int upper) {
        assert(upper >= 0);
        items_.resize(static_cast<size_t>(upper) + 1);
    }
    // Adds an entry at upperBound() + 1 and returns its index.
    int append(const T& item) {
        items_.push_back(item);
        return upperBound();
    }
    // Back to no entries (index 0 alone).
    void clear() { items_.assign(1, T{}); }

    T* begin() { return items_.data() + 1; }
    T* end() { return items_.data() + items_.size(); }
    const T* begin() const { return items_.data() + 1; }
    const T* end() const { return items_.data() + items_.size(); }

private:
    std::vector<T> items_;
};
