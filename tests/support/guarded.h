// Arrays that end (or begin) at a page that nobody may touch: one element too far is a crash, not a silent success.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <initializer_list>
#include <vector>

namespace test {

enum class Edge { End, Begin };

template <class T>
class Guarded {
  public:
    explicit Guarded(std::size_t n, Edge edge = Edge::End) : size_(n) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t inner = (n * sizeof(T) + page - 1) / page * page + page;
        mapped_ = inner + 2 * page;
        void* const raw = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (raw == MAP_FAILED) std::abort();
        base_ = static_cast<char*>(raw);
        if (mprotect(base_ + page, inner, PROT_READ | PROT_WRITE) != 0) std::abort();
        data_ = reinterpret_cast<T*>(edge == Edge::Begin ? base_ + page : base_ + page + inner - n * sizeof(T));
        for (std::size_t i = 0; i < n; ++i) data_[i] = T();
    }
    Guarded(const std::vector<T>& values, Edge edge = Edge::End) : Guarded(values.size(), edge) {
        for (std::size_t i = 0; i < size_; ++i) data_[i] = values[i];
    }
    Guarded(std::initializer_list<T> values) : Guarded(std::vector<T>(values)) {}
    ~Guarded() { munmap(base_, mapped_); }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    T* data() { return data_; }
    const T* data() const { return data_; }
    operator T*() { return data_; }
    T& operator[](auto i) { return data_[i]; }
    const T& operator[](auto i) const { return data_[i]; }
    std::size_t size() const { return size_; }
    std::vector<T> vector() const { return std::vector<T>(data_, data_ + size_); }

  private:
    std::size_t size_;
    std::size_t mapped_;
    char* base_;
    T* data_;
};

}  // namespace test
