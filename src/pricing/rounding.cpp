#include "pricing/rounding.h"

#include <cmath>

namespace kolmera {

double AvrundaHalvor(double x) {
    const double whole = std::floor(x);
    const double part = x - whole;
    if (part < 0.25) return whole;
    return part < 0.75 ? whole + 0.5 : whole + 1;
}

bool NästanLika(double a, double b) { return b + 0.001 >= a && a + 0.001 >= b; }

double PrisFrånTG(double kostnad, double tg) { return kostnad / (100 - tg) * 100; }

}  // namespace kolmera
