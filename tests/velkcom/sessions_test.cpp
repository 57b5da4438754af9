// Sessions with velkcom: command lines, and all that the program answers.
//
// A line that begins with "$ " is a command; double quotes keep a word together,
// and "\n" and "\xFF" stand for a character and a byte. What follows is its output,
// lines of errors behind "! ", and behind "= " the exit code where that is not 0.
// "+ file NAME TEXT" and "+ folder NAME" make what a command needs. Each session
// has a folder of its own, and a command that fails changes nothing in it. Lines
// from "@ DIFFERENCE" to "@" differ where tests/data/differences.tsv says so.

#include <algorithm>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "scratch_folder.h"
#include "support/data_table.h"
#include "support/expected_difference.h"

namespace velk::velkcom::test {
namespace {

std::string wordIn(std::istream& line) {
    std::string word;
    bool isQuoted = false;
    for (int sign = line.get(); line && (isQuoted || sign != ' '); sign = line.get()) {
        if (sign == '"') {
            isQuoted = !isQuoted;
        } else if (sign != '\\') {
            word += static_cast<char>(sign);
        } else if (sign = line.get(); sign == 'x') {
            std::string digits{static_cast<char>(line.get()), static_cast<char>(line.get())};
            word += static_cast<char>(std::stoi(digits, nullptr, 16));
        } else {
            word += sign == 'n' ? '\n' : static_cast<char>(sign);
        }
    }
    return word;
}

Arguments wordsOf(std::string const& text) {
    std::istringstream line(text);
    Arguments words;
    while (line.peek() != EOF) {
        words.push_back(wordIn(line));
        constexpr std::string_view module = "$MODULE";
        if (words.back().starts_with(module))
            words.back().replace(0, module.size(), VELKCOM_TWO_LIBRARIES);
    }
    return words;
}

void replaceAll(std::string& text, std::string const& from, std::string const& to) {
    for (auto at = text.find(from); at != text.npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
        // The rest of the path too has the separators of the sessions.
        auto const end = std::min(text.find_first_of("\"\n", at), text.size());
        std::replace(text.begin() + std::ptrdiff_t(at), text.begin() + std::ptrdiff_t(end), '\\',
                     '/');
    }
}

class Session {
  public:
    /// What the lines of a session are when it is run again.
    std::string rerun(std::vector<std::string> const& lines) {
        std::string text;
        for (std::string const& line : lines) {
            bool const isRemark = line.starts_with("# ");
            if (isRemark && !text.empty() && !wasRemark_) text += "\n";
            wasRemark_ = isRemark;
            if (isRemark || line.starts_with("@") || line.starts_with("+ ")) text += line + "\n";
            if (line.starts_with("+ ")) make(wordsOf(line.substr(2)));
            if (line.starts_with("$ ")) text += line + "\n" + answer(wordsOf(line.substr(2)));
        }
        return text;
    }

  private:
    void make(Arguments const& words) {
        if (words.at(0) == "folder") std::filesystem::create_directory(words.at(1));
        if (words.at(0) == "file") std::ofstream(words.at(1)) << words.at(2);
    }

    std::string answer(Arguments const& words) {
        auto const before = folder_.content();
        Outcome outcome = run(words);
        std::istringstream errors(outcome.errors);
        for (std::string line; std::getline(errors, line);) outcome.out += "! " + line + "\n";
        if (outcome.code != 0) {
            outcome.out += "= " + std::to_string(outcome.code) + "\n";
            EXPECT_TRUE(folder_.content() == before) << "changed something: " << outcome.out;
        }
        replaceAll(outcome.out, pathToUtf8(std::filesystem::current_path()), "$FOLDER");
        replaceAll(outcome.out, VELKCOM_TWO_LIBRARIES, "$MODULE");
        return outcome.out;
    }

    ScratchFolder const folder_;
    bool wasRemark_ = true;
};

/// Text with the parts that differ somewhere set apart from the rest.
struct Part {
    std::string difference;
    std::vector<std::string> lines;
    std::string text;
};

std::vector<Part> partsOf(std::filesystem::path const& file) {
    std::vector<Part> parts(1);
    std::ifstream stream(file, std::ios::binary);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("@ ")) parts.push_back({line.substr(2), {}, {}});
        parts.back().lines.push_back(line);
        parts.back().text += line + "\n";
        if (line == "@") parts.emplace_back();
    }
    return parts;
}

class Sessions : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(Sessions, GoAsTheyAreWritten) {
    Session session;
    std::string text;
    for (Part const& part : partsOf(GetParam())) {
        std::string const again = session.rerun(part.lines);
        bool const differs = !part.difference.empty() && velk::test::hasDifference(part.difference);
        if (differs) {
            velk::test::expectDifference(part.difference, [&] { EXPECT_EQ(again, part.text); });
        }
        text += differs ? part.text : again;
    }
    velk::test::expectApproved("velkcom/" + GetParam().filename().string(), text);
}

std::vector<std::filesystem::path> allSessions() {
    std::filesystem::directory_iterator const files(VELKCOM_SESSIONS);
    std::vector<std::filesystem::path> sessions;
    for (auto const& file : files)
        if (file.path().extension() == ".session") sessions.push_back(file.path());
    return sessions;
}

INSTANTIATE_TEST_SUITE_P(All, Sessions, testing::ValuesIn(allSessions()),
                         [](auto const& file) { return file.param.stem().string(); });

}  // namespace
}  // namespace velk::velkcom::test
