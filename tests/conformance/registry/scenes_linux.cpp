/// The files of the registry: what survives, what is refused, who may write, and
/// what processes see of each other.
#include <memory>

#include <gtest/gtest.h>
#include <unistd.h>

#include "conformance/registry/registry_model.h"
#include "conformance/registry/registry_process.h"
#include "support/data_table.h"

namespace {

using namespace velk::test;

/// Plays scenes of a table, each with a folder of its own. A process is there from
/// its first line on; its name begins with its user's, if that is another one. What
/// needs root is left out without, and scenes that are called so.
class Scenes {
  public:
    std::string answer(DataRow const& row) {
        if (!row["scene"].empty()) {
            processes_.clear();
            folder_ = std::make_unique<RegistryFolder>();
            isForRoot_ = row["scene"].starts_with("root: ");
        }
        bool const needsRoot = isForRoot_ || userOf(row["process"]) != 0;
        if (needsRoot && getuid() != 0) return isLeftOut_ = true, row["expected"];
        return told(row["process"], filledIn(row["call"]));
    }
    bool isLeftOut() const { return isLeftOut_; }

  private:
    static uid_t userOf(std::string const& process) {
        return process.starts_with("nobody") ? nobody : process.starts_with("alice") ? alice : 0;
    }

    static void replace(std::string& text, std::string const& what, std::string const& by) {
        for (auto at = text.find(what); at != text.npos; at = text.find(what, at + by.size())) {
            text.replace(at, what.size(), by);
        }
    }

    std::string filledIn(std::string call) const {
        replace(call, "{}", folder_->base());
        replace(call, "{me}", "S-1-22-1-" + std::to_string(getuid()));
        return call;
    }

    std::string told(std::string const& name, std::string const& call) {
        if (name == "-") return folder_->answer(call);
        auto& process = processes_[name];
        if (!process) process = std::make_unique<RegistryProcess>(*folder_, userOf(name));
        if (call == "kill") return process->kill() ? "ok" : "it has ended";
        auto answer = process->ask(call);
        replace(answer, folder_->base(), "{}");
        replace(answer, "S-1-22-1-" + std::to_string(getuid()), "{me}");
        for (auto const& [other, running] : processes_) {
            replace(answer, "process " + std::to_string(running->number()), other);
        }
        return answer;
    }

    std::unique_ptr<RegistryFolder> folder_;
    std::map<std::string, std::unique_ptr<RegistryProcess>> processes_;
    bool isForRoot_ = false, isLeftOut_ = false;
};

TEST(Hives, AreAsInTheScenes) {
    Scenes scenes;
    expectTable("registry/scenes.tsv", [&](DataRow const& row) { return scenes.answer(row); });
    if (scenes.isLeftOut()) GTEST_SKIP() << "the lines of other users need root";
}

TEST(Hives, WhatIsNoRegistryIsRefusedAndLeftAlone) {
    expectTable("registry/foreign.tsv", [](DataRow const& row) {
        RegistryFolder folder;
        RegistryProcess(folder).ask("make M/Software/Classes/Velk.Kept");
        RegistryProcess(folder).ask("make U/Software");
        folder.answer(row["change"]);
        folder.answer("keep machine.db");
        RegistryProcess process(folder);
        auto const answer = process.ask("open M/Software/Classes/Velk.Kept");
        EXPECT_EQ(process.ask("open M/Software all"), answer);
        EXPECT_EQ(process.ask("make U/Software/Mine"), "new") << "does not depend on it";
        EXPECT_EQ(folder.answer("same machine.db"), "yes");
        return answer;
    });
}

TEST(Hives, AnswerAsTheModelWhateverProcessAsks) {
    expectRounds("UMC", true, [](auto const& calls, bool tells) {
        RegistryFolder folder;
        std::size_t at = 0;
        RegistryProcess(folder).ask("make U/Software/Classes/Velk");
        RegistryProcess(folder).ask("make M/Software/Classes/Velk");
        for (bool goesOn = true; goesOn && at < calls.size();) {
            RegistryProcess process(folder);
            auto const begun = at;
            at = compare(calls, begun, "/Software/Classes/Velk", tells,
                         [&](std::string const& words) { return process.ask(words); });
            goesOn = at < calls.size() && calls[at].verb == "process" && at > begun;
        }
        if (at == calls.size()) {
            EXPECT_EQ(folder.answer("whole user.db"), "ok 0");
            EXPECT_EQ(folder.answer("whole machine.db"), "ok 0");
        }
        return at;
    });
}

}  // namespace
