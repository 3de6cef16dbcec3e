#pragma once

namespace kolmera {

/// Rounds to whole or half units: below .25 down, from .25 to the half, from .75 up, counted upwards from the whole
/// unit below (-1.2 gives -1). For |x| below 2^31.
double AvrundaHalvor(double x);

/// Whether two amounts differ by at most 0.001.
bool NästanLika(double a, double b);

/// The price that gives a margin of `tg` percent of the price; `tg` is not 100.
double PrisFrånTG(double kostnad, double tg);

}  // namespace kolmera
