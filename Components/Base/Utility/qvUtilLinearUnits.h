// Units of length.

#ifndef qvUtilLinearUnits_h
#define qvUtilLinearUnits_h

#include "Base/qvBaseConfig.h"

namespace qvUtil {

/// Converts lengths by way of millimetres.
class QV_EXPORT LinearUnits {
public:
    enum System { Inches, Feet, Yards, Miles, Millimeters, Centimeters, Meters, Kilometers };

    /// The value in the unit `to`, rounded as double arithmetic has it: a mile is 1609343.9999999998 mm. NaN when
    /// either is none of the units above.
    static double convert(double value, System from, System to);
};

} // namespace qvUtil

#endif
