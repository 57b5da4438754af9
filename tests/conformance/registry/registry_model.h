/// What the registry shall answer, as a tree in memory, and calls drawn at random.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace velk::test {

/// A call's words, with what they mean.
struct ModelCall {
    std::string verb;
    /// U, M, C, or the name of a key that stands open.
    std::string base;
    /// Names by their place in the order of names, each in one of two spellings.
    struct Name {
        int place = 0;
        bool isLarge = false;
        std::string text() const;
    };
    std::vector<Name> path;
    Name valueName;
    /// Of a call that opens: the name of the key; else the value.
    std::string argument;

    /// The words for RegistryCalls, with this before the path of a root.
    std::string words(std::string const& front) const;
};

/// Two trees: U and M are each of them, C shows both as one, the user's over the
/// machine's.
class RegistryModel {
  public:
    std::string answer(ModelCall const& call);
    /// Whether the call makes sense now: its key stands open, or a transaction.
    bool allows(ModelCall const& call) const;

  private:
    struct Node;
    using NodePointer = std::shared_ptr<Node>;
    using Roots = std::vector<NodePointer>;
    using Path = std::vector<ModelCall::Name>;
    struct Node {
        std::string name;
        std::map<int, NodePointer> children;
        /// With the names as they were first spelled.
        std::map<int, std::pair<std::string, std::string>> values;
        bool isGone = false;
    };
    struct Base {
        Roots roots;
        Path path;
        /// The key that shows; null for a root.
        NodePointer key;
    };

    void closeAll();
    static NodePointer copied(NodePointer const& node);
    static void clear(Node& node);
    static std::vector<NodePointer> keysAt(Roots const& roots, Path const& path);
    static std::string list(std::vector<NodePointer> const& keys);
    std::string make(Roots const& roots, Path const& path);
    static std::string onValue(ModelCall const& call, std::vector<NodePointer> const& keys);
    static std::string onTree(ModelCall const& call, Roots const& roots, Path const& path);
    std::string transact(std::string const& verb);

    NodePointer user_ = std::make_shared<Node>(), machine_ = std::make_shared<Node>();
    std::map<std::string, Base> bases_ = {
        {"U", {{user_}, {}, {}}}, {"M", {{machine_}, {}, {}}}, {"C", {{user_, machine_}, {}, {}}}};
    std::vector<NodePointer> before_;
};

/// Makes calls, with what stands before the paths of roots, and gives the place of
/// the first that is not answered as by the model, or their count. Those before
/// `from` have been made; at a turn to another process it comes to its end.
std::size_t compare(std::vector<ModelCall> const& calls, std::size_t from, std::string const& front,
                    bool tells, std::function<std::string(std::string const&)> const& answer);

/// Begins with an empty registry; tells the answer that is wrong where it is to.
using FirstWrong = std::function<std::size_t(std::vector<ModelCall> const&, bool tells)>;

/// Holds many rounds of random calls on these roots (letters) to the model; with
/// `hasProcesses` there are transactions, and turns to a new process, among them.
/// Of a round that fails, only the calls are told that its failure needs.
/// VELK_SEED is another first seed, VELK_ROUNDS another number of rounds.
void expectRounds(std::string const& roots, bool hasProcesses, FirstWrong const& firstWrong);

}  // namespace velk::test
