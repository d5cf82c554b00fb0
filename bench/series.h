// Times of one thing done several times, in milliseconds.
#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace kvn::bench {

class Series {
  public:
    template <typename Body>
    void time(const Body& body) {
        const auto begin = std::chrono::steady_clock::now();
        body();
        const std::chrono::duration<double, std::milli> took =
            std::chrono::steady_clock::now() - begin;
        values_.push_back(took.count());
    }
    double median() {
        std::sort(values_.begin(), values_.end());
        return values_[values_.size() / 2];
    }
    double least() const { return *std::min_element(values_.begin(), values_.end()); }
    double most() const { return *std::max_element(values_.begin(), values_.end()); }

  private:
    std::vector<double> values_;
};

} // namespace kvn::bench
