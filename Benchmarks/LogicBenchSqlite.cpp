#include "LogicBench.h"

#include <cstdio>
#include <cstdlib>
#include <sqlite3.h>
#include <string>

namespace {

void check(int result, int wanted) {
    if (result == wanted)
        return;
    std::fprintf(stderr, "sqlite: %s\n", sqlite3_errstr(result));
    std::abort();
}

class SqliteSide : public LogicSide {
public:
    SqliteSide(Rows const & first, Rows const & second) {
        check(sqlite3_open(":memory:", &database_), SQLITE_OK);
        fill("p", first);
        fill("q", second);
        lookUp_ = prepare("select v from p where k = ?");
        join_ = prepare("select p.v + q.v from p join q on q.k = p.k");
    }
    ~SqliteSide() override {
        sqlite3_finalize(lookUp_);
        sqlite3_finalize(join_);
        sqlite3_close(database_);
    }
    long lookUp(int key) override {
        check(sqlite3_bind_int(lookUp_, 1, key), SQLITE_OK);
        return sum(lookUp_);
    }
    long join() override { return sum(join_); }

private:
    void run(std::string const & text) {
        check(sqlite3_exec(database_, text.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    }
    sqlite3_stmt * prepare(std::string const & text) {
        sqlite3_stmt * statement = nullptr;
        check(sqlite3_prepare_v2(database_, text.c_str(), -1, &statement, nullptr), SQLITE_OK);
        return statement;
    }
    // The primary key holds all of a row, so that a look-up reads the index alone.
    void fill(std::string const & table, Rows const & rows) {
        run("create table " + table + " (k integer, v integer, primary key (k, v)) without rowid");
        run("begin");
        sqlite3_stmt * const insert = prepare("insert or ignore into " + table + " values (?, ?)");
        for (auto const & [key, value] : rows) {
            sqlite3_bind_int(insert, 1, key);
            sqlite3_bind_int(insert, 2, value);
            check(sqlite3_step(insert), SQLITE_DONE);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        run("commit");
    }
    static long sum(sqlite3_stmt * statement) {
        long result = 0;
        int state;
        while ((state = sqlite3_step(statement)) == SQLITE_ROW)
            result += sqlite3_column_int(statement, 0);
        check(state, SQLITE_DONE);
        sqlite3_reset(statement);
        return result;
    }

    sqlite3 * database_ = nullptr;
    sqlite3_stmt * lookUp_ = nullptr;
    sqlite3_stmt * join_ = nullptr;
};

} // namespace

std::unique_ptr<LogicSide> makeSqliteSide(Rows const & first, Rows const & second) {
    return std::make_unique<SqliteSide>(first, second);
}
