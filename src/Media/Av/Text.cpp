#include "Media/Av/Text.h"

#include <array>

extern "C" {
#include <libavutil/error.h>
}

std::string Av::text(int error)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text = {};
    av_strerror(error, text.data(), text.size()); // writes something in any case
    return text.data();
}
