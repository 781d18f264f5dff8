// Statements and functions of random programs.
#include "tests/msl/conformance/random_glsl.h"

#include <array>

#include "tests/msl/conformance/random_generator.h"

namespace msl::tests {
namespace {

// Matrices of small whole numbers.
const char* const kSmall =
    "mat2 small(mat2 a) { return mat2(floor(clamp(a[0], -8.0, 8.0)), floor(clamp(a[1], -8.0, "
    "8.0))); }\n"
    "mat3 small(mat3 a) { for (int i = 0; i < 3; i++) a[i] = floor(clamp(a[i], -8.0, 8.0)); return "
    "a; }\n"
    "mat4 small(mat4 a) { return mat4(floor(clamp(a[0], -8.0, 8.0)), floor(clamp(a[1], -8.0, "
    "8.0)), floor(clamp(a[2], -8.0, 8.0)), floor(clamp(a[3], -8.0, 8.0))); }\n";

} // namespace

void RandomGenerator::declare(Shape shape) {
    const std::string name = newName("v");
    line(typeName(shape) + " " + name + " = " + bounded(shape, expression(shape, 2)) + ";");
    variables_.push_back({name, shape});
}

void RandomGenerator::declareArray() {
    const Shape shape = anyShape();
    const uint32_t length = below(2) != 0 ? 2 : 4;
    const std::string name = newName("a");
    const std::string type = typeName(shape) + "[" + std::to_string(length) + "]";
    std::string values;
    for (uint32_t i = 0; i < length; ++i) {
        values += (i == 0 ? "" : ", ") + bounded(shape, expression(shape, 1));
    }
    line(type + " " + name + " = " + type + "(" + values + ");");
    variables_.push_back({name, shape, true, length});
}

// A struct, and with luck a copy of it, so that both can be changed.
void RandomGenerator::declareStruct() {
    const auto& type = structs_[below(static_cast<uint32_t>(structs_.size()))];
    const std::string name = newName("s");
    std::string values;
    for (const auto& member : type.members) {
        std::string value;
        for (uint32_t i = 0; i < std::max(1U, member.length); ++i) {
            value += (i == 0 ? "" : ", ") + bounded(member.shape, expression(member.shape, 1));
        }
        if (member.length > 0) {
            value =
                typeName(member.shape) + "[" + std::to_string(member.length) + "](" + value + ")";
        }
        values += (values.empty() ? "" : ", ") + value;
    }
    line(type.name + " " + name + " = " + type.name + "(" + values + ");");
    std::vector<std::string> made{name};
    if (below(2) != 0) {
        made.push_back(newName("s"));
        line(type.name + " " + made.back() + " = " + name + ";");
    }
    for (const auto& whole : made) {
        for (const auto& member : type.members) {
            variables_.push_back({whole + "." + member.name, member.shape, true, member.length});
        }
    }
}

// References are bound to variables of their own, because what a call with one variable for two of
// them gives is left open.
void RandomGenerator::callWithReferences() {
    const auto index = below(static_cast<uint32_t>(functions_.size()));
    const Callee callee = functions_[index];
    std::string arguments =
        expression({Kind::number, 2}, 2) + ", " + expression({Kind::integer, 1}, 2);
    for (const Shape shape : callee.references) {
        declare(shape);
        arguments += ", " + variables_.back().name;
    }
    const std::string name = newName("v");
    line(typeName(callee.result) + " " + name + " = f" + std::to_string(index) + "(" + arguments +
         ");");
    variables_.push_back({name, callee.result});
}

void RandomGenerator::branch(int depth) {
    const size_t known = variables_.size();
    line("if (" + expression({Kind::truth, 1}, 2) + ") {");
    statements(1 + static_cast<int>(below(2)), depth - 1);
    variables_.resize(known);
    if (below(2) != 0) {
        line("} else {");
        statements(1 + static_cast<int>(below(2)), depth - 1);
        variables_.resize(known);
    }
    line("}");
}

void RandomGenerator::loop(int depth) {
    const size_t known = variables_.size();
    const std::string counter = newName("i");
    const std::string bound = std::to_string(2 + below(3));
    const uint32_t form = below(3);
    if (form == 0) {
        line("for (int " + counter + " = 0; " + counter + " < " + bound + "; " + counter + "++) {");
    } else {
        line("int " + counter + " = 0;");
        line(form == 1 ? "while (" + counter + " < " + bound + ") {" : "do {");
        line(counter + "++;");
    }
    variables_.push_back({counter, {Kind::integer, 1}, false});
    statements(1 + static_cast<int>(below(2)), depth - 1);
    if (below(2) != 0) {
        line("if (" + expression({Kind::truth, 1}, 2) + ") " +
             std::string(pick({"break", "continue"})) + ";");
    }
    statements(1, depth - 1);
    variables_.resize(known);
    line(form == 2 ? "} while (" + counter + " < " + bound + ");" : "}");
}

void RandomGenerator::multiway(int depth) {
    const size_t known = variables_.size();
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
}

void RandomGenerator::assign() {
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
    std::string place = element(target);
    if (shape.kind == Kind::matrix) {
        if (below(2) != 0) {
            // A column, so that the matrix stays one of small whole numbers.
            shape.kind = Kind::number;
            line(place + "[n & 1] = " + small(shape, expression(shape, 2)) + ";");
            return;
        }
    } else if (shape.count > 1 && below(2) != 0) {
        static constexpr std::array<std::string_view, 5> kPlaces{"x", "y", "yx", "xy", "x"};
        const auto swizzle = kPlaces[below(static_cast<uint32_t>(kPlaces.size()))];
        place += "." + std::string(swizzle);
        shape.count = static_cast<uint32_t>(swizzle.size());
    } else if (shape.count > 1 && below(3) == 0) {
        place += "[n % " + std::to_string(shape.count) + "]";
        shape.count = 1;
    }
    line(place + " = " + bounded(shape, expression(shape, 2)) + ";");
}

void RandomGenerator::statement(int depth) {
    switch (below(depth <= 0 ? 5 : 11)) {
    case 0:
        return declare(anyShape());
    case 1:
        return below(3) == 0 ? declareArray() : assign();
    case 2:
        return below(3) == 0 && !structs_.empty() ? declareStruct() : assign();
    case 5:
    case 6:
        return branch(depth);
    case 7:
    case 8:
        return loop(depth);
    case 9:
        return multiway(depth);
    case 10:
        return functions_.empty() ? assign() : callWithReferences();
    default:
        return assign();
    }
}

void RandomGenerator::statements(int count, int depth) {
    for (int i = 0; i < count; ++i) {
        statement(depth);
    }
}

std::string RandomGenerator::structure(uint32_t index) {
    Struct made{"S" + std::to_string(index), {}};
    std::string text = "struct " + made.name + " {";
    const uint32_t count = 2 + below(3);
    for (uint32_t i = 0; i < count; ++i) {
        Variable member{"m" + std::to_string(i), anyShape(), true, below(3) == 0 ? 2U : 0U};
        if (member.shape.kind == Kind::truth) {
            member.length = 0; // SPIRV-Cross makes no sense of arrays of bool in structs
        }
        text += " " + typeName(member.shape) + " " + member.name +
                (member.length > 0 ? "[" + std::to_string(member.length) + "];" : ";");
        made.members.push_back(member);
    }
    structs_.push_back(made);
    return text + " };\n";
}

std::string RandomGenerator::function(uint32_t index) {
    Callee callee{anyShape(), {}};
    variables_ = {{"a", {Kind::number, 2}}, {"b", {Kind::integer, 1}}};
    std::string parameters = "vec2 a, int b";
    body_.clear();
    line("a = clamp(a, -64.0, 64.0); b = clamp(b, -99, 99); int n = b & 15; uint m = uint(n);");
    for (uint32_t i = below(3); i > 0; --i) {
        const Shape shape = anyShape();
        const std::string name = "r" + std::to_string(i);
        callee.references.push_back(shape);
        if (below(2) != 0) {
            parameters += ", inout " + typeName(shape) + " " + name;
        } else {
            parameters += ", out " + typeName(shape) + " " + name;
            line(name + " = " + bounded(shape, expression(shape, 1)) + ";");
        }
        variables_.push_back({name, shape});
    }
    statements(1, 1);
    line("if (" + expression({Kind::truth, 1}, 2) + ") return " +
         bounded(callee.result, expression(callee.result, 2)) + ";");
    statements(1, 1);
    line("return " + bounded(callee.result, expression(callee.result, 2)) + ";");
    functions_.push_back(callee);
    return typeName(callee.result) + " f" + std::to_string(index) + "(" + parameters + ") {\n" +
           body_ + "}\n";
}

RandomGlsl RandomGenerator::run() {
    RandomGlsl result;
    result.functions = kSmall;
    for (uint32_t i = below(3); i > 0; --i) {
        result.functions += structure(i);
    }
    for (uint32_t i = 0; i < 2; ++i) {
        result.functions += function(i);
    }
    body_.clear();
    variables_ = {{"p", {Kind::number, 2}, false},
                  {"q", {Kind::number, 4}, false},
                  {"v1234", {Kind::number, 4}, false},
                  {"n", {Kind::integer, 1}, false},
                  {"m", {Kind::natural, 1}, false}};
    statements(5, 2);
    line("color = vec4(" + expression({Kind::number, 2}, 3) + ", " +
         expression({Kind::integer, 1}, 3) + ", " + expression({Kind::natural, 1}, 3) +
         " % 1024u);");
    result.body = body_;
    return result;
}

RandomGlsl randomGlsl(uint32_t seed) { return RandomGenerator(seed).run(); }

} // namespace msl::tests
