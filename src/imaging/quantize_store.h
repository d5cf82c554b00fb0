// Working memory for bands: as many objects as threads come for one.
#pragma once

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace kvn::imaging {

template <class T>
class Store {
  public:
    // Lent for one band; goes back at the end of the scope.
    class Loan {
      public:
        Loan(Store& store, std::unique_ptr<T> object) : store_(store), object_(std::move(object)) {}
        ~Loan() {
            const std::lock_guard lock(store_.mutex_);
            store_.free_.push_back(std::move(object_));
        }
        Loan(const Loan&) = delete;
        Loan& operator=(const Loan&) = delete;
        T& operator*() const { return *object_; }

      private:
        Store& store_;
        std::unique_ptr<T> object_;
    };

    // `make` gives a new T where none is free.
    template <class Make>
    Loan borrow(const Make& make) {
        {
            const std::lock_guard lock(mutex_);
            if (!free_.empty()) {
                auto object = std::move(free_.back());
                free_.pop_back();
                return Loan(*this, std::move(object));
            }
        }
        auto object = std::make_unique<T>(make());
        const std::lock_guard lock(mutex_);
        free_.reserve(++count_); // so that giving back cannot fail
        return Loan(*this, std::move(object));
    }

    // All of them, when every loan has ended.
    std::vector<std::unique_ptr<T>>& objects() { return free_; }

  private:
    std::mutex mutex_;
    std::vector<std::unique_ptr<T>> free_;
    std::size_t count_ = 0;
};

} // namespace kvn::imaging
