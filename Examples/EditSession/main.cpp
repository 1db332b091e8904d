// EditSession <file.obj> [trace]
//
// Reads an OBJ file into a document, edits it in a few undoable steps, goes back and forth in the history, and compares
// what undo leaves with the file. What the history did is written to the trace file, by default edit-session.trace in
// the current directory, and printed at the end.
//
// Exit codes: 0 when the document came back, 1 when something is wrong, 2 for wrong arguments.

#include "MeshCommands.h"
#include "MeshModel.h"
#include "ObjFile.h"
#include "Support/ProgressBar.h"

#include "Base/Undo/qvUndoCommand.h"
#include "Base/Undo/qvUndoGroup.h"
#include "Base/Undo/qvUndoManager.h"
#include "Base/Undo/qvUndoReport.h"
#include "Base/Utility/qvUtilProgress.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

// What ends the program with its text on standard error.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Session {
public:
    Session(mesh::Document & document, mesh::Document const & original)
        : document_(document), original_(original), manager_(*qvUndo::getInstalledManager()) {
        manager_.getBusySignal().addCallback(this, &Session::busyChanged, client_);
    }

    void run() {
        move("lift", 0, 2);
        rename("lifted");
        show("two steps");

        // A drag comes in pieces as the pointer moves. One group for each makes them undoable at once, and tied
        // together they are one step for the user.
        int const firstPiece = move("drag", 1, 0.5);
        move("drag", 1, 0.25);
        int const lastPiece = move("drag", 1, 0.125);
        manager_.associateGroups(firstPiece, lastPiece);
        show("a drag in three pieces");

        expect(manager_.undoIt(), "the drag is undone");
        expect(manager_.undoIt(), "the name is undone");
        expect(manager_.doIt(), "the name is done again");
        show("back and forth");

        move("lower", 0, -1); // what was undone is gone now
        show("another way");

        while (manager_.canUndo())
            expect(manager_.undoIt(), "everything is undone");
        expect(isOriginal(), "the document is what it was");
        show("the beginning");
        while (manager_.canDo())
            expect(manager_.doIt(), "everything is done again");
        expect(!isOriginal() && document_.firstMesh->name == "lifted", "the document is edited");
        show("the end");

        // The document is closed. Its commands are void, which the next undo finds out.
        manager_.pointerDestroyed(&document_);
        expect(!manager_.undoIt(), "nothing is undone in a closed document");
        show("closed");
        std::printf("the history was busy %d times\n", timesBusy_);
    }

private:
    int move(char const * what, int first, double height) {
        return perform(what, [&](qvUndo::Group * group) {
            return new mesh::MovePositions(group, document_, first, 4, qvLinear::Vector(0, 0, height));
        });
    }

    void rename(char const * name) {
        perform("rename",
                [&](qvUndo::Group * group) { return new mesh::RenameMesh(group, *document_.firstMesh, name); });
    }

    // A step of one command; gives the number of its group. When undo is off there is no group: the command is done for
    // good, and nobody keeps it.
    template <class MakeCommand>
    int perform(char const * what, MakeCommand makeCommand) {
        qvUndo::Group * const group = manager_.newGroup(what, false);
        std::unique_ptr<qvUndo::Command> command(makeCommand(group));
        expect(command->doIt(), what);
        if (!group)
            return 0;
        command.release(); // belongs to the group
        return group->getID();
    }

    void show(char const * where) {
        std::printf("%-24s %d groups in %d steps, can undo: %s, can do: %s; mesh \"%s\"\n", where,
                    manager_.getNumGroups(false), manager_.getNumGroups(true), manager_.canUndo() ? "yes" : "no",
                    manager_.canDo() ? "yes" : "no", document_.firstMesh->name.asChar());
    }

    bool isOriginal() const { return compareDocuments(original_, document_, mesh::Exactness::bits).isEmpty(); }

    static void expect(bool holds, char const * what) {
        if (!holds)
            throw Failure(std::string("wrong: ") + what);
    }

    void busyChanged(bool busy) { timesBusy_ += busy; }

    mesh::Document & document_;
    mesh::Document const & original_;
    qvUndo::Manager & manager_;
    int timesBusy_ = 0;
    qvRTB::SignalClient client_; // dies first
};

void readTwice(char const * name, mesh::Document & document, mesh::Document & original) {
    qvUtil::Progress progress, half;
    ProgressBar const bar(ProgressBar::Use::whereATerminalIs, progress);
    progress.setCaption("reading");
    for (mesh::Document * const one : {&document, &original}) {
        progress.subPhase(0.5, half);
        mesh::readObjFile(name, *one, half);
    }
    if (!document.firstMesh)
        throw Failure(std::string(name) + ": there is no mesh to edit");
}

void run(char const * objName, char const * traceName) {
    mesh::Document document, original;
    readTwice(objName, document, original);
    std::filesystem::remove(traceName); // the trace is appended to what is there
    qvUndoReportInit(traceName);
    qvUndo::installManager(qvUndo::newManager());
    Session(document, original).run();
    qvUndo::installManager(nullptr);
    qvUndoReportInit(nullptr);

    std::printf("the trace:\n");
    std::fflush(stdout);
    std::ifstream trace(traceName);
    if (!trace)
        throw Failure(std::string(traceName) + ": no trace was written");
    std::cout << trace.rdbuf();
}

} // namespace

int main(int argc, char ** argv) {
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: EditSession <file.obj> [trace]\n");
        return 2;
    }
    try {
        run(argv[1], argc == 3 ? argv[2] : "edit-session.trace");
        return 0;
    } catch (std::exception const & failure) {
        qvUndo::installManager(nullptr);
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
