// What the sides of the logic benchmark have in common.

#ifndef LogicBench_h
#define LogicBench_h

#include <functional>
#include <memory>
#include <utility>
#include <vector>

// Rows of two numbers; a look-up knows the first.
using Rows = std::vector<std::pair<int, int>>;

class LogicSide {
public:
    virtual ~LogicSide() = default;
    // The sum of the second numbers of all rows with this first one.
    virtual long lookUp(int key) = 0;
    // The sum of the second numbers of pairs of rows, one of each table, with equal first ones.
    virtual long join() = 0;
};

// Rows of the first table, which is looked up in, and of the second one.
using MakeLogicSide = std::unique_ptr<LogicSide> (*)(Rows const & first, Rows const & second);

std::unique_ptr<LogicSide> makeSqliteSide(Rows const & first, Rows const & second);
std::unique_ptr<LogicSide> makePrologSide(Rows const & first, Rows const & second);

#endif
