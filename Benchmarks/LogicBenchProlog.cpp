#include "LogicBench.h"

#include <SWI-Prolog.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

void check(int good, char const * what) {
    if (good)
        return;
    std::fprintf(stderr, "prolog: %s failed\n", what);
    std::abort();
}

void start() {
    if (PL_is_initialised(nullptr, nullptr))
        return;
    static char name[] = "LogicBench", quiet[] = "-q", noSignals[] = "--no-signals";
    static char * arguments[] = {name, quiet, noSignals, nullptr};
    check(PL_initialise(3, arguments), "starting");
}

void run(char const * text) {
    fid_t const frame = PL_open_foreign_frame();
    term_t const goal = PL_new_term_ref();
    check(PL_chars_to_term(text, goal) && PL_call(goal, nullptr), text);
    PL_close_foreign_frame(frame);
}

class PrologSide : public LogicSide {
public:
    PrologSide(Rows const & first, Rows const & second) {
        start();
        run("(retractall(p(_, _)), retractall(q(_, _)), retractall(both(_, _)))");
        run("assertz((both(V, W) :- p(K, V), q(K, W)))");
        fill("p", first);
        fill("q", second);
    }
    long lookUp(int key) override {
        fid_t const frame = PL_open_foreign_frame();
        static predicate_t const p = PL_predicate("p", 2, "user");
        term_t const arguments = PL_new_term_refs(2);
        check(PL_put_integer(arguments, key), "binding");
        long const result = sum(p, arguments, 1);
        PL_discard_foreign_frame(frame);
        return result;
    }
    long join() override {
        fid_t const frame = PL_open_foreign_frame();
        static predicate_t const both = PL_predicate("both", 2, "user");
        long const result = sum(both, PL_new_term_refs(2), 0);
        PL_discard_foreign_frame(frame);
        return result;
    }

private:
    static void fill(char const * name, Rows rows) {
        std::sort(rows.begin(), rows.end()); // solutions come in the order of the clauses
        rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
        char text[64];
        for (auto const & [key, value] : rows) {
            std::snprintf(text, sizeof text, "assertz(%s(%d, %d))", name, key, value);
            run(text);
        }
    }
    // Adds up the arguments from the given one on.
    static long sum(predicate_t predicate, term_t arguments, int from) {
        long result = 0;
        qid_t const query = PL_open_query(nullptr, PL_Q_NODEBUG, predicate, arguments);
        while (PL_next_solution(query)) {
            for (int i = from; i < 2; ++i) {
                long value = 0;
                check(PL_get_long(arguments + static_cast<term_t>(i), &value), "reading");
                result += value;
            }
        }
        PL_close_query(query);
        return result;
    }
};

} // namespace

std::unique_ptr<LogicSide> makePrologSide(Rows const & first, Rows const & second) {
    return std::make_unique<PrologSide>(first, second);
}
