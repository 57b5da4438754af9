#include "text/member_path.h"

namespace velk::velkcom {
namespace {

class PathReader {
  public:
    explicit PathReader(std::string_view path) : path_(path) {}

    std::vector<MemberStep> steps() {
        std::vector<MemberStep> result;
        do {
            result.push_back(step());
        } while (take('.'));
        if (!atEnd()) fail("expected a dot or the end");
        for (std::size_t i = 0; i + 1 < result.size(); ++i) {
            // A dot in front needs something before it.
            if (result[i].name.empty() && result[i].arguments.empty()) {
                fail("a name before a dot is missing");
            }
        }
        return result;
    }

  private:
    MemberStep step() {
        MemberStep result;
        std::size_t const end = path_.find_first_of(".()", next_);
        result.name = path_.substr(next_, end == path_.npos ? path_.npos : end - next_);
        next_ += result.name.size();
        if (take('(')) result.arguments = arguments();
        return result;
    }

    // After the opening parenthesis.
    std::vector<WrittenArgument> arguments() {
        std::vector<WrittenArgument> result;
        skipBlanks();
        if (take(')')) return result;
        for (;;) {
            result.push_back(argument());
            if (take(')')) return result;
            if (!take(',')) fail("expected a comma or a closing parenthesis");
        }
    }

    WrittenArgument argument() {
        skipBlanks();
        WrittenArgument result;
        if (take('"')) {
            result = {quotedText(), true};
        } else {
            std::size_t const end = path_.find_first_of(",)", next_);
            std::string_view text =
                path_.substr(next_, end == path_.npos ? path_.npos : end - next_);
            next_ += text.size();
            while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
            if (text.empty()) fail("an argument is missing");
            result.text = text;
        }
        skipBlanks();
        return result;
    }

    // After the opening quote.
    std::string quotedText() {
        std::string text;
        for (;;) {
            if (atEnd()) fail("expected a closing quote");
            char const unit = path_[next_++];
            if (unit == '"' && !take('"')) return text;
            text.push_back(unit);
        }
    }

    bool atEnd() const { return next_ >= path_.size(); }
    bool take(char expected) {
        if (atEnd() || path_[next_] != expected) return false;
        ++next_;
        return true;
    }
    void skipBlanks() {
        while (!atEnd() && path_[next_] == ' ') ++next_;
    }
    [[noreturn]] void fail(char const* problem) const {
        throw UsageError("member \"" + std::string(path_) + "\", character " +
                         std::to_string(next_ + 1) + ": " + problem);
    }

    std::string_view path_;
    std::size_t next_ = 0;
};

}  // namespace

std::vector<MemberStep> parseMemberPath(std::string_view path) {
    return PathReader(path).steps();
}

}  // namespace velk::velkcom
