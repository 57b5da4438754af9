/// A search for operations after which something is not as its model says.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace velk::test {

/// One operation as numbers below 10,000, which whoever runs it takes as it
/// needs: so that any operation of a sequence can be left out and the rest
/// still runs.
struct Operation {
    unsigned kind = 0;
    unsigned place = 0;
    unsigned what = 0;
    unsigned size = 0;
};

/// What a subject can do: runs one of its members for each operation.
template <typename Subject>
struct Operations {
    struct Named {
        char const* name;
        void (Subject::*run)(Operation const&);
    };
    std::vector<Named> all;

    void run(Subject& subject, Operation const& operation, std::string& log) const {
        Named const& chosen = all[operation.kind % all.size()];
        log += chosen.name;
        for (unsigned const number : {operation.place, operation.what, operation.size}) {
            log += ' ' + std::to_string(number);
        }
        log += '\n';
        (subject.*chosen.run)(operation);
    }
};

/// Ends a run: what the model says and what was found.
struct Mismatch {
    std::string what;
};

/// Goes on only when `holds`.
void expectModel(bool holds, std::string const& what);
/// The same for a result code.
void expectCode(long got, long expected, std::string const& what);
inline void expectSuccess(long got, std::string const& what) {
    expectCode(got, 0, what);
}

/// Runs `operations` on a new subject beside its model and adds a line a piece
/// to `log`. Throws Mismatch.
using RunOperations =
    std::function<void(std::vector<Operation> const& operations, std::string& log)>;

/// Draws `rounds` sequences of `length` operations each and runs them. Where
/// one ends in a mismatch, the running test fails with the shortest part of it
/// that does so and that was found quickly, and the seed. VELK_SEED draws other
/// ones, VELK_ROUNDS takes so many rounds.
void searchOperations(unsigned rounds, unsigned length, RunOperations const& run);

}  // namespace velk::test
