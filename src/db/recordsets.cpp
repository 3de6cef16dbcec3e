#include "db/recordsets.h"

#include "platform/attempt.h"

namespace kolmera {

std::int32_t AntalPoster(Recordset& recordset) {
    PassedOverSilently passedOver;
    std::int32_t count = 0;
    attempt(passedOver, "AntalPoster", [&] {
        count = recordset.recordCount();
        if (count == 0) return;
        recordset.moveLast();
        recordset.moveFirst();
        count = recordset.recordCount();
    });
    return count;
}

void StängPost(std::unique_ptr<Recordset>& recordset) { recordset.reset(); }

}  // namespace kolmera
