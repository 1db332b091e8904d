#include "Base/Utility/qvUtilColor8.h"

#include "Base/Utility/qvUtilColor.h"

namespace qvUtil {

namespace {

unsigned char asByte(float component) {
    double const scaled = component * 255.0;
    if (scaled >= 255)
        return 255;
    return scaled > 0 ? static_cast<unsigned char>(scaled) : 0; // and 0 for NaN
}

float asFloat(unsigned char component) { return static_cast<float>(component / 255.0); }

} // namespace

Color8::Color8(Color const & color) { setRGBA(color.r(), color.g(), color.b(), color.a()); }

void Color8::setRGBA(float r, float g, float b, float a) { *this = Color8(asByte(r), asByte(g), asByte(b), asByte(a)); }

void Color8::getRGBA(float & r, float & g, float & b, float & a) const {
    r = asFloat(rgba_[0]);
    g = asFloat(rgba_[1]);
    b = asFloat(rgba_[2]);
    a = asFloat(rgba_[3]);
}

} // namespace qvUtil
