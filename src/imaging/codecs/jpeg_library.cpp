#include "imaging/codecs/jpeg_library.h"

#include <jerror.h>

namespace kvn::imaging {

JpegErrors::JpegErrors() {
    jpeg_std_error(&outer_.manager);
    outer_.self = this;
    outer_.manager.error_exit = &JpegErrors::onError;
    outer_.manager.emit_message = &JpegErrors::onMessage;
}

JpegErrors& JpegErrors::of(j_common_ptr info) {
    return *reinterpret_cast<Outer*>(info->err)->self;
}

void JpegErrors::giveUp(const char* message) {
    message_ = message;
    std::longjmp(jump_, 1);
}

void JpegErrors::onError(j_common_ptr info) {
    char text[JMSG_LENGTH_MAX] = {};
    info->err->format_message(info, text);
    of(info).giveUp(text);
}

void JpegErrors::onMessage(j_common_ptr info, int level) {
    if (level >= 0) return;
    JpegErrors& errors = of(info);
    const int code = info->err->msg_code;
    if (code == JWRN_JPEG_EOF) errors.fileEnded_ = true;
    if (code == JWRN_HIT_MARKER && errors.dataEndedIn_ < 0)
        errors.dataEndedIn_ =
            static_cast<int>(reinterpret_cast<j_decompress_ptr>(info)->input_iMCU_row);
    // Odd values in headers that have no bearing on the picture.
    if (code == JWRN_ADOBE_XFORM || code == JWRN_JFIF_MAJOR) return;
    if (info->err->num_warnings++ > 0) return;
    char text[JMSG_LENGTH_MAX] = {};
    info->err->format_message(info, text);
    errors.firstWarning_ = text;
}

} // namespace kvn::imaging
