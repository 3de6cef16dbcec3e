#include "db/batchtransaction.h"

#include "platform/error.h"

namespace kolmera {

BatchTransaction::BatchTransaction(Database& database, Kind kind) : database_(database) {
    if (kind == Kind::Whole) {
        whole_ = database_.beginWhole();
    } else {
        database_.begin();
    }
}

BatchTransaction::~BatchTransaction() {
    // Not so after `end`, nor when the engine has rolled the transaction back by itself.
    if (!database_.inTransaction()) return;
    try {
        commitOrRollBack();
    } catch (const PlatformError&) {
        // Only on the way out of an error that is reported already: without it, `end` has committed.
        return;
    }
}

void BatchTransaction::commitOrRollBack() {
    if (whole_) return database_.rollback();
    try {
        database_.commit();
    } catch (const PlatformError&) {
        database_.rollback();
    }
}

void BatchTransaction::next() {
    database_.commitJoined();
    database_.begin();
}

void BatchTransaction::end() { database_.commit(); }

}  // namespace kolmera
