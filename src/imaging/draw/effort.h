// A limit to the work that a drawing from a file may ask for.
#pragma once

namespace kvn::imaging::draw {

// In nanoseconds as they are on a usual machine; counted, not measured, so that a file always
// gives the same picture.
class Effort {
  public:
    explicit Effort(double most) : left_(most) {}
    // False once there is no more: the work shall not be done then.
    bool spend(double nanoseconds) {
        left_ -= nanoseconds;
        return left_ > 0;
    }
    bool isSpent() const { return left_ <= 0; }

  private:
    double left_;
};

} // namespace kvn::imaging::draw
