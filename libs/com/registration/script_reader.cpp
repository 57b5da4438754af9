#include "com/registration/script_reader.h"

#include "com/error.h"
#include "com/utf.h"

namespace velk::com {
namespace {

bool isBlank(OLECHAR unit) noexcept {
    return unit == ' ' || unit == '\t' || unit == '\r' || unit == '\n' || unit == '\f' ||
           unit == '\v' || unit == 0xFEFF;
}

bool isLowSurrogate(OLECHAR unit) noexcept {
    return unit >= 0xDC00 && unit < 0xE000;
}

constexpr OLECHAR quote = '\'';

}  // namespace

void throwScriptError(ScriptPosition position, std::string const& problem) {
    throw Error(
        HRESULT_FROM_WIN32(ERROR_INVALID_DATA),
        std::to_string(position.line) + ":" + std::to_string(position.column) + ": " + problem);
}

ScriptCharacters::ScriptCharacters(TextView text, std::span<Replacement const> replacements)
    : text_(text), replacements_(replacements) {
    fetch();
}

void ScriptCharacters::advance() {
    fetch();
}

OLECHAR ScriptCharacters::takeRaw() {
    OLECHAR const unit = text_[next_++];
    bool const crBeforeLf = unit == '\r' && next_ < text_.size() && text_[next_] == '\n';
    if (unit == '\n' || (unit == '\r' && !crBeforeLf)) {
        ++nextPosition_.line;
        nextPosition_.column = 1;
    } else if (!isLowSurrogate(unit)) {
        ++nextPosition_.column;
    }
    return unit;
}

void ScriptCharacters::fetch() {
    while (pending_.empty() && next_ < text_.size()) {
        currentPosition_ = nextPosition_;
        OLECHAR const unit = takeRaw();
        if (unit == 0) throwScriptError(currentPosition_, "a NUL character is not allowed");
        if (unit != '%') {
            current_ = unit;
            currentIsReplaced_ = false;
            return;
        }
        startReplacement();
    }
    if (pending_.empty()) {
        current_.reset();
        currentPosition_ = nextPosition_;
        return;
    }
    current_ = pending_.front();
    currentIsReplaced_ = true;
    currentPosition_ = pendingPosition_;
    pending_.remove_prefix(1);
    if (*current_ == 0) {
        throwScriptError(currentPosition_, "a NUL character is not allowed in a replacement");
    }
}

// The opening "%" has been taken.
void ScriptCharacters::startReplacement() {
    pendingPosition_ = currentPosition_;
    std::size_t const end = text_.find_first_of(OLESTR("%\r\n"), next_);
    if (end == TextView::npos || text_[end] != '%') {
        throwScriptError(pendingPosition_, "expected a '%' that closes the replacement's name");
    }
    TextView const name = text_.substr(next_, end - next_);
    while (next_ <= end) takeRaw();
    if (name.empty()) {
        static constexpr OLECHAR percent[] = {'%'};
        pending_ = TextView(percent, 1);
        return;
    }
    for (auto const& replacement : replacements_) {
        if (equalIgnoringCase(replacement.name, name)) {
            pending_ = replacement.value;
            return;
        }
    }
    throwScriptError(pendingPosition_, "nothing is known to replace %" + toUtf8(name) + "%");
}

bool ScriptCharacters::atComment() const noexcept {
    return current_ == OLECHAR{'/'} && !currentIsReplaced_ && next_ < text_.size() &&
           text_[next_] == '/';
}

void ScriptCharacters::skipLine() {
    while (next_ < text_.size() && text_[next_] != '\n' && text_[next_] != '\r') takeRaw();
    fetch();
}

void ScriptWords::skipBlanks() {
    while (!characters_.atEnd()) {
        if (characters_.atComment()) {
            characters_.skipLine();
        } else if (isBlank(characters_.peek())) {
            characters_.advance();
        } else {
            return;
        }
    }
}

ScriptToken ScriptWords::next() {
    skipBlanks();
    ScriptToken token;
    token.position = characters_.position();
    if (characters_.atEnd()) return token;
    if (characters_.peek() == quote) {
        readQuoted(token);
    } else {
        readWord(token);
    }
    return token;
}

void ScriptWords::readQuoted(ScriptToken& token) {
    token.kind = ScriptTokenKind::quoted;
    characters_.advance();
    for (;;) {
        if (characters_.atEnd()) {
            throwScriptError(token.position, "expected a quote that closes this text");
        }
        OLECHAR const unit = characters_.peek();
        characters_.advance();
        if (unit == quote) {
            if (characters_.atEnd() || isBlank(characters_.peek())) return;
            if (characters_.peek() != quote) {
                throwScriptError(characters_.position(),
                                 "expected a blank after the closing quote");
            }
            characters_.advance();
        }
        token.text.push_back(unit);
    }
}

void ScriptWords::readWord(ScriptToken& token) {
    while (!characters_.atEnd() && !isBlank(characters_.peek())) {
        token.text.push_back(characters_.peek());
        characters_.advance();
    }
    token.kind = ScriptTokenKind::word;
    if (token.text.size() != 1) return;
    if (token.text[0] == '{') token.kind = ScriptTokenKind::open;
    if (token.text[0] == '}') token.kind = ScriptTokenKind::close;
    if (token.text[0] == '=') token.kind = ScriptTokenKind::equals;
}

}  // namespace velk::com
