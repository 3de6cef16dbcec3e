#pragma once

namespace kolmera {

/// Returns after that time; events run meanwhile.
void Vänta(int milliseconds);

}  // namespace kolmera
