#include "tests/msl/conformance/random_glsl.h"

#include <array>
#include <random>
#include <string_view>
#include <vector>

namespace msl::tests {
namespace {

enum class Kind { number, integer, natural, truth };

struct Shape {
    Kind kind = Kind::number;
    uint32_t count = 1;
    bool operator==(const Shape&) const = default;
};

struct Variable {
    std::string name;
    Shape shape;
    bool writable = true;
};

// Floats stay on multiples of small powers of two and within bounds, so that two compilers that
// order operations differently still agree.
class Generator {
  public:
    explicit Generator(uint32_t seed) : random_(seed) {}
    RandomGlsl run();

  private:
    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_() % bound); }
    std::string_view pick(std::initializer_list<std::string_view> choices) {
        return choices.begin()[below(static_cast<uint32_t>(choices.size()))];
    }
    static std::string typeName(Shape shape);
    Shape anyShape() { return {static_cast<Kind>(below(4)), 1 + below(4)}; }
    std::string leaf(Shape shape);
    std::string expression(Shape shape, int depth);
    std::string number(Shape shape, int depth);
    std::string integer(Shape shape, int depth);
    std::string truth(Shape shape, int depth);
    std::string bounded(Shape shape, const std::string& text);
    std::string function(uint32_t index);
    void statements(int count, int depth);
    void statement(int depth);
    void line(const std::string& text) { body_ += text + "\n"; }

    std::mt19937 random_;
    std::vector<Variable> variables_;
    std::vector<Shape> functions_; // results; each takes a vec2 and an int
    std::string body_;
    uint32_t names_ = 0;
};

std::string Generator::typeName(Shape shape) {
    static constexpr std::array<std::string_view, 4> kScalars{"float", "int", "uint", "bool"};
    static constexpr std::array<std::string_view, 4> kVectors{"vec", "ivec", "uvec", "bvec"};
    const auto kind = static_cast<size_t>(shape.kind);
    return shape.count == 1 ? std::string(kScalars[kind])
                            : std::string(kVectors[kind]) + std::to_string(shape.count);
}

std::string Generator::leaf(Shape shape) {
    std::vector<std::string> found;
    for (const auto& variable : variables_) {
        if (variable.shape == shape) {
            found.push_back(variable.name);
        } else if (variable.shape.kind == shape.kind && variable.shape.count > 1) {
            std::string swizzle = variable.name + ".";
            for (uint32_t i = 0; i < shape.count; ++i) {
                swizzle += "xyzw"[below(variable.shape.count)];
            }
            found.push_back(swizzle);
        }
    }
    if (!found.empty() && below(4) != 0) {
        return found[below(static_cast<uint32_t>(found.size()))];
    }
    const std::string value = std::to_string(below(5));
    switch (shape.kind) {
    case Kind::number:
        return typeName(shape) + "(" + value + ".5)";
    case Kind::natural:
        return typeName(shape) + "(" + value + "u)";
    case Kind::integer:
        return typeName(shape) + "(" + value + " - 2)";
    case Kind::truth:
        return typeName(shape) + (below(2) != 0 ? "(true)" : "(n > 7)");
    }
    return {};
}

std::string Generator::bounded(Shape shape, const std::string& text) {
    switch (shape.kind) {
    case Kind::number:
        return "clamp(" + text + ", -64.0, 64.0)";
    case Kind::integer:
        return "clamp(" + text + ", -999, 999)";
    case Kind::natural:
        return "(" + text + " & 1023u)";
    case Kind::truth:
        return text;
    }
    return {};
}

std::string Generator::number(Shape shape, int depth) {
    const auto part = [&] { return expression(shape, depth - 1); };
    switch (below(9)) {
    case 0:
        return "(" + part() + " + " + part() + ")";
    case 1:
        return "(" + part() + " - " + part() + ")";
    case 2:
        return "(" + part() + " * " + leaf(shape) + ")";
    case 3:
        return std::string(pick({"abs", "floor", "sign", "-", "ceil"})) + "(" + part() + ")";
    case 4:
        return std::string(pick({"min", "max", "step"})) + "(" + part() + ", " + part() + ")";
    case 5:
        return "mix(" + part() + ", " + part() + ", " +
               expression({Kind::truth, shape.count}, depth - 1) + ")";
    case 6:
        return typeName(shape) + "(" + expression({Kind::integer, shape.count}, depth - 1) + ")";
    case 7:
        return "(" + expression({Kind::truth, 1}, depth - 1) + " ? " + part() + " : " + part() +
               ")";
    default:
        return "(" + part() + " * 0.5)";
    }
}

std::string Generator::integer(Shape shape, int depth) {
    const bool natural = shape.kind == Kind::natural;
    const auto part = [&] { return expression(shape, depth - 1); };
    const std::string one = natural ? "1u" : "1";
    switch (below(8)) {
    case 0:
    case 1:
        return "(" + part() + " " + std::string(pick({"+", "-", "*", "&", "|", "^"})) + " " +
               part() + ")";
    case 2:
        return "(" + part() + std::string(pick({" << ", " >> "})) + std::to_string(below(4)) + ")";
    case 3:
        // GLSL leaves the remainder of negative numbers open, so both are made positive.
        return natural ? "(" + part() + std::string(pick({" / ", " % "})) + "(" + part() + " | 1u))"
                       : "(abs(" + part() + ")" + std::string(pick({" / ", " % "})) + "(abs(" +
                             part() + ") + 1))";
    case 4:
        return std::string(pick({"min", "max"})) + "(" + part() + ", " + part() + ")";
    case 5:
        return natural ? "(~" + part() + " >> 1)" : "abs(" + part() + ")";
    case 6:
        return natural ? typeName(shape) + "(abs(" +
                             expression({Kind::integer, shape.count}, depth - 1) + "))"
                       : typeName(shape) + "(" +
                             bounded({Kind::number, shape.count},
                                     expression({Kind::number, shape.count}, depth - 1)) +
                             ")";
    default:
        return "(" + expression({Kind::truth, 1}, depth - 1) + " ? " + part() + " : " + part() +
               ")";
    }
}

std::string Generator::truth(Shape shape, int depth) {
    const auto kind = static_cast<Kind>(below(3));
    const Shape operand{kind, shape.count};
    if (shape.count > 1) {
        return below(3) == 0
                   ? "not(" + expression(shape, depth - 1) + ")"
                   : std::string(pick({"lessThan", "greaterThanEqual", "equal", "notEqual"})) +
                         "(" + expression(operand, depth - 1) + ", " +
                         expression(operand, depth - 1) + ")";
    }
    switch (below(5)) {
    case 0:
        return "(" + expression(shape, depth - 1) + std::string(pick({" && ", " || ", " ^^ "})) +
               expression(shape, depth - 1) + ")";
    case 1:
        return "!(" + expression(shape, depth - 1) + ")";
    case 2:
        return std::string(pick({"any", "all"})) + "(" +
               expression({Kind::truth, 2 + below(3)}, depth - 1) + ")";
    default:
        return "(" + expression(operand, depth - 1) +
               std::string(pick({" < ", " > ", " <= ", " >= ", " == ", " != "})) +
               expression(operand, depth - 1) + ")";
    }
}

std::string Generator::expression(Shape shape, int depth) {
    if (depth <= 0 || below(5) == 0) {
        return leaf(shape);
    }
    if (shape.count > 1 && below(4) == 0) {
        std::string text = typeName(shape) + "(";
        for (uint32_t left = shape.count; left > 0;) {
            const uint32_t taken = 1 + below(left == shape.count ? left - 1 : left);
            text += (left == shape.count ? "" : ", ") + expression({shape.kind, taken}, depth - 1);
            left -= taken;
        }
        return text + ")";
    }
    for (size_t i = 0; i < functions_.size(); ++i) {
        if (functions_[i] == shape && below(3) == 0) {
            return "f" + std::to_string(i) + "(" + expression({Kind::number, 2}, depth - 1) + ", " +
                   expression({Kind::integer, 1}, depth - 1) + ")";
        }
    }
    switch (shape.kind) {
    case Kind::number:
        return number(shape, depth);
    case Kind::truth:
        return truth(shape, depth);
    default:
        return integer(shape, depth);
    }
}

void Generator::statement(int depth) {
    const size_t known = variables_.size();
    switch (depth <= 0 ? below(3) : below(7)) {
    case 0: {
        const Shape shape = anyShape();
        const std::string name = "v" + std::to_string(names_++);
        line(typeName(shape) + " " + name + " = " + bounded(shape, expression(shape, 3)) + ";");
        variables_.push_back({name, shape});
        return;
    }
    case 3: {
        line("if (" + expression({Kind::truth, 1}, 2) + ") {");
        statements(2, depth - 1);
        variables_.resize(known);
        if (below(2) != 0) {
            line("} else {");
            statements(2, depth - 1);
            variables_.resize(known);
        }
        line("}");
        return;
    }
    case 4: {
        const std::string counter = "i" + std::to_string(names_++);
        line("for (int " + counter + " = 0; " + counter + " < " + std::to_string(2 + below(3)) +
             "; " + counter + "++) {");
        variables_.push_back({counter, {Kind::integer, 1}, false});
        statements(2, depth - 1);
        if (below(2) != 0) {
            line("if (" + expression({Kind::truth, 1}, 2) + ") " +
                 std::string(pick({"break", "continue"})) + ";");
        }
        statements(1, depth - 1);
        variables_.resize(known);
        line("}");
        return;
    }
    case 5: {
        line("switch (" + expression({Kind::integer, 1}, 2) + ") {");
        for (int i = 0; i < 3; ++i) {
            line(i == 2 ? "default:" : "case " + std::to_string(i) + ":");
            line("{");
            statements(1, depth - 1);
            variables_.resize(known);
            line("}");
            if (below(3) != 0) {
                line("break;");
            }
        }
        line("}");
        return;
    }
    default:
        break;
    }
    std::vector<Variable> writable;
    for (const auto& variable : variables_) {
        if (variable.writable) {
            writable.push_back(variable);
        }
    }
    if (writable.empty()) {
        return;
    }
    const auto& target = writable[below(static_cast<uint32_t>(writable.size()))];
    Shape shape = target.shape;
    std::string place = target.name;
    if (shape.count > 1 && below(2) != 0) {
        static constexpr std::array<std::string_view, 5> kPlaces{"x", "y", "yx", "xy", "x"};
        const auto swizzle = kPlaces[below(static_cast<uint32_t>(kPlaces.size()))];
        place += "." + std::string(swizzle);
        shape.count = static_cast<uint32_t>(swizzle.size());
    } else if (shape.count > 1 && below(3) == 0) {
        place += "[n % " + std::to_string(shape.count) + "]";
        shape.count = 1;
    }
    line(place + " = " + bounded(shape, expression(shape, 3)) + ";");
}

void Generator::statements(int count, int depth) {
    for (int i = 0; i < count; ++i) {
        statement(depth);
    }
}

std::string Generator::function(uint32_t index) {
    const Shape result = anyShape();
    variables_ = {{"a", {Kind::number, 2}}, {"b", {Kind::integer, 1}}};
    body_.clear();
    line("a = clamp(a, -64.0, 64.0); b = clamp(b, -99, 99); int n = b & 15;");
    statements(2, 1);
    line("if (" + expression({Kind::truth, 1}, 2) + ") return " +
         bounded(result, expression(result, 2)) + ";");
    statements(2, 1);
    line("return " + bounded(result, expression(result, 2)) + ";");
    const std::string text =
        typeName(result) + " f" + std::to_string(index) + "(vec2 a, int b) {\n" + body_ + "}\n";
    functions_.push_back(result);
    return text;
}

RandomGlsl Generator::run() {
    RandomGlsl result;
    for (uint32_t i = 0; i < 3; ++i) {
        result.functions += function(i);
    }
    body_.clear();
    variables_ = {{"p", {Kind::number, 2}, false},
                  {"q", {Kind::number, 4}, false},
                  {"v1234", {Kind::number, 4}, false},
                  {"n", {Kind::integer, 1}, false},
                  {"m", {Kind::natural, 1}, false}};
    statements(9, 2);
    line("color = vec4(" + expression({Kind::number, 2}, 3) + ", " +
         expression({Kind::integer, 1}, 3) + ", " + expression({Kind::natural, 1}, 3) +
         " % 1024u);");
    result.body = body_;
    return result;
}

} // namespace

RandomGlsl randomGlsl(uint32_t seed) { return Generator(seed).run(); }

} // namespace msl::tests
