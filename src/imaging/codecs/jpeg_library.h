// libjpeg-turbo behind a door that C++ can use: its failures leave by longjmp, which must cross
// no destructor, so every call into it goes through guarded().
#pragma once

#include <csetjmp>
#include <cstdio>
#include <string>

#include <jpeglib.h>

namespace kvn::imaging {

class JpegErrors {
  public:
    JpegErrors();
    JpegErrors(const JpegErrors&) = delete;
    JpegErrors& operator=(const JpegErrors&) = delete;

    jpeg_error_mgr* manager() { return &outer_.manager; }

    // Runs `calls`, which may hold nothing that needs destruction. False if the library gave up;
    // message() then says why.
    template <typename Calls>
    bool guarded(const Calls& calls) {
        if (setjmp(jump_) != 0) return false;
        calls();
        return true;
    }

    const std::string& message() const { return message_; }
    const std::string& firstWarning() const { return firstWarning_; }
    // The band of coded blocks in which the data of a one-scan file ran out; -1 if it did not.
    int dataEndedIn() const { return dataEndedIn_; }
    bool fileEnded() const { return fileEnded_; }
    // Leaves the guarded() that is running.
    [[noreturn]] void giveUp(const char* message);

  private:
    static void onError(j_common_ptr info);
    static void onMessage(j_common_ptr info, int level);
    static JpegErrors& of(j_common_ptr info);

    struct Outer {
        jpeg_error_mgr manager; // first, so that the library's pointer is ours
        JpegErrors* self;
    };
    Outer outer_{};
    std::jmp_buf jump_{};
    std::string message_;
    std::string firstWarning_;
    int dataEndedIn_ = -1;
    bool fileEnded_ = false;
};

} // namespace kvn::imaging
