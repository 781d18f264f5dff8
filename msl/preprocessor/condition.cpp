#include <charconv>
#include <string>

#include "msl/preprocessor/preprocessor.h"

namespace msl {
namespace {

// The two integer types of preprocessing arithmetic, both 64 bits wide.
struct Number {
    uint64_t bits = 0;
    bool isUnsigned = false;
};

class ConditionParser {
  public:
    ConditionParser(const std::vector<Token>& tokens, const Token& at, Diagnostics& diagnostics)
        : tokens_(tokens), at_(at), diagnostics_(diagnostics) {}

    std::optional<bool> run() {
        const Number value = conditional(true);
        if (!failed_ && position_ < tokens_.size()) {
            fail(tokens_[position_], "this is not expected in a condition");
        }
        if (failed_) {
            return std::nullopt;
        }
        return value.bits != 0;
    }

  private:
    void fail(const Token& at, std::string message) {
        if (!failed_) {
            diagnostics_.error(at.range(), std::move(message));
        }
        failed_ = true;
        position_ = tokens_.size();
    }

    TokenKind peek() const {
        return position_ < tokens_.size() ? tokens_[position_].kind : TokenKind::endOfFile;
    }

    // `live` is false in the branch that is not evaluated: a division by zero there is no error.
    Number conditional(bool live) {
        Number condition = binary(1, live);
        if (peek() != TokenKind::question) {
            return condition;
        }
        if (++depth_ > kMaxNesting) {
            fail(at_, "the condition is nested too deeply");
            return {};
        }
        ++position_;
        const Number whenTrue = conditional(live && condition.bits != 0);
        if (peek() != TokenKind::colon) {
            fail(at_, "a '?' in a condition needs its ':'");
            return {};
        }
        ++position_;
        const Number whenFalse = conditional(live && condition.bits == 0);
        --depth_;
        Number result = condition.bits != 0 ? whenTrue : whenFalse;
        result.isUnsigned = whenTrue.isUnsigned || whenFalse.isUnsigned;
        return result;
    }

    Number binary(int lowest, bool live) {
        Number left = unary(live);
        while (binaryPrecedence(peek()) >= lowest) {
            const Token& op = tokens_[position_++];
            const bool rightLive = live && !(op.is(TokenKind::pipePipe) && left.bits != 0) &&
                                   !(op.is(TokenKind::ampersandAmpersand) && left.bits == 0);
            const Number right = binary(binaryPrecedence(op.kind) + 1, rightLive);
            left = apply(op, left, right, rightLive);
        }
        return left;
    }

    Number apply(const Token& op, Number left, Number right, bool live) {
        const bool isUnsigned = left.isUnsigned || right.isUnsigned;
        const uint64_t a = left.bits;
        const uint64_t b = right.bits;
        const auto sa = static_cast<int64_t>(a);
        const auto sb = static_cast<int64_t>(b);
        const auto truth = [](bool value) { return Number{value ? 1U : 0U, false}; };
        const auto number = [&](uint64_t value) { return Number{value, isUnsigned}; };
        switch (op.kind) {
        case TokenKind::pipePipe:
            return truth(a != 0 || b != 0);
        case TokenKind::ampersandAmpersand:
            return truth(a != 0 && b != 0);
        case TokenKind::pipe:
            return number(a | b);
        case TokenKind::caret:
            return number(a ^ b);
        case TokenKind::ampersand:
            return number(a & b);
        case TokenKind::equalEqual:
            return truth(a == b);
        case TokenKind::exclamationEqual:
            return truth(a != b);
        case TokenKind::less:
            return truth(isUnsigned ? a < b : sa < sb);
        case TokenKind::greater:
            return truth(isUnsigned ? a > b : sa > sb);
        case TokenKind::lessEqual:
            return truth(isUnsigned ? a <= b : sa <= sb);
        case TokenKind::greaterEqual:
            return truth(isUnsigned ? a >= b : sa >= sb);
        case TokenKind::shiftLeft:
            return {a << (b & 63U), left.isUnsigned};
        case TokenKind::shiftRight:
            return {left.isUnsigned ? a >> (b & 63U) : static_cast<uint64_t>(sa >> (b & 63U)),
                    left.isUnsigned};
        case TokenKind::plus:
            return number(a + b);
        case TokenKind::minus:
            return number(a - b);
        case TokenKind::star:
            return number(a * b);
        default:
            break;
        }
        if (b == 0) {
            if (live) {
                fail(op, "a division by zero in a condition");
            }
            return number(0);
        }
        if (op.is(TokenKind::slash)) {
            if (isUnsigned) {
                return number(a / b);
            }
            return number(sb == -1 ? 0 - a : static_cast<uint64_t>(sa / sb));
        }
        if (isUnsigned) {
            return number(a % b);
        }
        return number(sb == -1 ? 0 : static_cast<uint64_t>(sa % sb));
    }

    Number unary(bool live) {
        if (++depth_ > kMaxNesting) {
            fail(at_, "the condition is nested too deeply");
            return {};
        }
        const Number result = unaryAtDepth(live);
        --depth_;
        return result;
    }

    Number unaryAtDepth(bool live) {
        if (position_ >= tokens_.size()) {
            fail(at_, "the condition ends too early");
            return {};
        }
        const Token& token = tokens_[position_++];
        switch (token.kind) {
        case TokenKind::exclamation:
            return {unary(live).bits == 0 ? 1U : 0U, false};
        case TokenKind::plus:
            return unary(live);
        case TokenKind::minus: {
            const Number value = unary(live);
            return {0 - value.bits, value.isUnsigned};
        }
        case TokenKind::tilde: {
            const Number value = unary(live);
            return {~value.bits, value.isUnsigned};
        }
        case TokenKind::leftParen: {
            const Number value = conditional(live);
            if (peek() != TokenKind::rightParen) {
                fail(token, "this parenthesis is never closed");
                return {};
            }
            ++position_;
            return value;
        }
        case TokenKind::number:
            return number(token);
        case TokenKind::character:
            return {static_cast<uint8_t>(token.length > 1 ? token.characters[1] : '\0'), false};
        case TokenKind::identifier:
            return {token.is(Keyword::trueWord) ? 1U : 0U, false}; // an unknown name counts as 0
        default:
            fail(token, "this is not expected in a condition");
            return {};
        }
    }

    Number number(const Token& token) {
        auto text = token.text();
        bool isUnsigned = false;
        while (!text.empty() && (text.back() == 'u' || text.back() == 'U' || text.back() == 'l' ||
                                 text.back() == 'L')) {
            isUnsigned = isUnsigned || text.back() == 'u' || text.back() == 'U';
            text.remove_suffix(1);
        }
        int base = 10;
        if (text.starts_with("0x") || text.starts_with("0X")) {
            base = 16;
            text.remove_prefix(2);
        } else if (text.starts_with("0b") || text.starts_with("0B")) {
            base = 2;
            text.remove_prefix(2);
        } else if (text.size() > 1 && text.front() == '0') {
            base = 8;
        }
        uint64_t value = 0;
        const auto end = text.data() + text.size();
        const auto parsed = std::from_chars(text.data(), end, value, base);
        if (parsed.ec != std::errc() || parsed.ptr != end) {
            fail(token, "'" + std::string(token.text()) + "' is no integer");
            return {};
        }
        return {value, isUnsigned || value > INT64_MAX};
    }

    const std::vector<Token>& tokens_;
    const Token& at_;
    Diagnostics& diagnostics_;
    size_t position_ = 0;
    uint32_t depth_ = 0;
    bool failed_ = false;
};

} // namespace

std::optional<bool> evaluateCondition(const std::vector<Token>& tokens, const Token& at,
                                      Diagnostics& diagnostics) {
    return ConditionParser(tokens, at, diagnostics).run();
}

} // namespace msl
