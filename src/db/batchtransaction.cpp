#include "db/batchtransaction.h"

#include "platform/error.h"

namespace kolmera {

BatchTransaction::~BatchTransaction() {
    // Not so after `end`, nor when the engine has rolled the transaction back by itself.
    if (!database_.inTransaction()) return;
    try {
        database_.commit();
    } catch (const PlatformError&) {
        // Only on the way out of an error that is reported already: without it, `end` has committed.
        try {
            database_.rollback();
        } catch (const PlatformError&) {
            return;
        }
    }
}

void BatchTransaction::next() {
    database_.commitJoined();
    database_.begin();
}

void BatchTransaction::end() { database_.commit(); }

}  // namespace kolmera
