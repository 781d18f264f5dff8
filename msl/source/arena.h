// Memory for everything that lives exactly as long as one compilation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace msl {

// Hands out memory that is given back all at once. Objects are never destroyed, so only trivially
// destructible types may live here.
class Arena {
  public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    void* allocate(size_t size, size_t alignment) {
        auto position = (reinterpret_cast<uintptr_t>(next_) + alignment - 1) & ~(alignment - 1);
        if (next_ == nullptr || position + size > reinterpret_cast<uintptr_t>(end_)) {
            grow(size + alignment);
            position = (reinterpret_cast<uintptr_t>(next_) + alignment - 1) & ~(alignment - 1);
        }
        next_ = reinterpret_cast<std::byte*>(position + size);
        return reinterpret_cast<void*>(position);
    }

    template <typename T, typename... Arguments>
    T* make(Arguments&&... arguments) {
        static_assert(std::is_trivially_destructible_v<T>);
        return new (allocate(sizeof(T), alignof(T))) T{std::forward<Arguments>(arguments)...};
    }

    template <typename T>
    std::span<T> copy(const std::vector<T>& values) {
        static_assert(std::is_trivially_destructible_v<T>);
        if (values.empty()) {
            return {};
        }
        auto* memory = static_cast<T*>(allocate(sizeof(T) * values.size(), alignof(T)));
        std::uninitialized_copy(values.begin(), values.end(), memory);
        return {memory, values.size()};
    }

    std::string_view copy(std::string_view text) {
        auto* memory = static_cast<char*>(allocate(text.size() + 1, 1));
        std::memcpy(memory, text.data(), text.size());
        memory[text.size()] = '\0';
        return {memory, text.size()};
    }

  private:
    void grow(size_t atLeast) {
        const size_t size = atLeast > kBlockSize ? atLeast : kBlockSize;
        blocks_.push_back(std::make_unique_for_overwrite<std::byte[]>(size));
        next_ = blocks_.back().get();
        end_ = next_ + size;
    }

    static constexpr size_t kBlockSize = size_t{64} << 10;
    std::vector<std::unique_ptr<std::byte[]>> blocks_;
    std::byte* next_ = nullptr;
    std::byte* end_ = nullptr;
};

} // namespace msl
