#include "import/window/rejectssaving.h"

#include <gtest/gtest.h>

#include "history/runrecord.h"
#include "platform/tsv.h"
#include "support/qt/formworld.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;

TEST(RejectsSaving, ProposesAFileBesideThePriceFileAndTellsWhatBecameOfIt) {
    FormWorld world;
    RunHeader head;
    head.job = "Skruv";
    head.priceFile.path = (world.folder / "priser.txt").string();
    RunRecord record(world.data / "Körningar", head);
    record.close();
    const RecordReader run(record.file());
    QWidget parent;
    QString proposed, answer;
    const auto save = [&] {
        world.boxPort.answers = {Answer::OK};
        saveRejects(world.program, &parent, run, [&](const FileQuestion& question) {
            proposed = question.path;
            return answer;
        });
    };
    save();
    EXPECT_EQ(fromQt(proposed), (world.folder / "priser-att-ratta.txt").string());
    EXPECT_TRUE(world.boxPort.shown.empty()) << "Cancel was told of";
    answer = toQt(head.priceFile.path);
    world.folder.write("priser.txt", "1\r\n");
    save();
    EXPECT_EQ(world.boxPort.shown.size(), 1U) << "nothing was told";
    EXPECT_EQ(readWholeFile(head.priceFile.path), "1\r\n") << "the price file was overwritten";
}

}  // namespace
}  // namespace kolmera
