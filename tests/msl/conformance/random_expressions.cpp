// Expressions of random programs.
#include <array>

#include "tests/msl/conformance/random_generator.h"

namespace msl::tests {

std::string RandomGenerator::typeName(Shape shape) {
    static constexpr std::array<std::string_view, 4> kScalars{"float", "int", "uint", "bool"};
    static constexpr std::array<std::string_view, 5> kVectors{"vec", "ivec", "uvec", "bvec", "mat"};
    const auto kind = static_cast<size_t>(shape.kind);
    return shape.count == 1 ? std::string(kScalars[kind])
                            : std::string(kVectors[kind]) + std::to_string(shape.count);
}

Shape RandomGenerator::anyShape() {
    const auto kind = static_cast<Kind>(below(9) % 5);
    return {kind, kind == Kind::matrix ? 2 + below(3) : 1 + below(4)};
}

// A variable, or an element of it where it is an array.
std::string RandomGenerator::element(const Variable& variable) {
    if (variable.length == 0) {
        return variable.name;
    }
    const std::string last = std::to_string(variable.length - 1);
    switch (below(3)) {
    case 0:
        return variable.name + "[" + std::to_string(below(variable.length)) + "]";
    case 1:
        return variable.name + "[n & " + last + "]";
    default:
        return variable.name + "[int(m) & " + last + "]";
    }
}

std::string RandomGenerator::leaf(Shape shape) {
    std::vector<std::string> found;
    for (const auto& variable : variables_) {
        const Shape has = variable.shape;
        if (has == shape) {
            found.push_back(element(variable));
        } else if (has.kind == Kind::matrix && shape.kind == Kind::number) {
            // A column of a matrix, or one number of it.
            const std::string column = below(2) != 0 ? "n & 1" : std::to_string(below(has.count));
            const std::string name = element(variable) + "[" + column + "]";
            if (shape.count == has.count) {
                found.push_back(name);
            } else if (shape.count == 1) {
                found.push_back(name + "[" + std::to_string(below(has.count)) + "]");
            }
        } else if (has.kind == shape.kind && shape.kind != Kind::matrix && has.count > 1) {
            std::string swizzle = element(variable) + ".";
            for (uint32_t i = 0; i < shape.count; ++i) {
                swizzle += "xyzw"[below(has.count)];
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
    case Kind::matrix:
        return typeName(shape) + "(" + value + ".0)";
    }
    return {};
}

std::string RandomGenerator::bounded(Shape shape, const std::string& text) {
    switch (shape.kind) {
    case Kind::number:
        return "clamp(" + text + ", -64.0, 64.0)";
    case Kind::integer:
        return "clamp(" + text + ", -999, 999)";
    case Kind::natural:
        return "(" + text + " & 1023u)";
    case Kind::truth:
        return text;
    case Kind::matrix:
        return small(shape, text);
    }
    return {};
}

// Small whole numbers, of which sums of products are exact.
std::string RandomGenerator::small(Shape shape, const std::string& text) {
    return shape.kind == Kind::matrix ? "small(" + text + ")"
                                      : "floor(clamp(" + text + ", -8.0, 8.0))";
}

std::string RandomGenerator::number(Shape shape, int depth) {
    const auto part = [&] { return expression(shape, depth - 1); };
    switch (below(11)) {
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
    case 8:
        if (shape.count > 1) {
            const std::string by = small({Kind::matrix, shape.count},
                                         expression({Kind::matrix, shape.count}, depth - 1));
            const std::string vector = small(shape, part());
            return below(2) != 0 ? "(" + by + " * " + vector + ")"
                                 : "(" + vector + " * " + by + ")";
        }
        return "dot(" + small({Kind::number, 3}, expression({Kind::number, 3}, depth - 1)) + ", " +
               small({Kind::number, 3}, expression({Kind::number, 3}, depth - 1)) + ")";
    case 9:
        return "fract(" + part() + " * 0.25)";
    default:
        return "(" + part() + " * 0.5)";
    }
}

std::string RandomGenerator::integer(Shape shape, int depth) {
    const bool natural = shape.kind == Kind::natural;
    const auto part = [&] { return expression(shape, depth - 1); };
    const std::string one = natural ? "1u" : "1";
    switch (below(10)) {
    case 0:
    case 1:
        return "(" + part() + " " + std::string(pick({"+", "-", "*", "&", "|", "^"})) + " " +
               part() + ")";
    case 2:
        return "(" + part() + std::string(pick({" << ", " >> "})) + std::to_string(below(4)) + ")";
    case 3:
        // GLSL leaves the remainder of negative numbers open, so both are made positive.
        return natural ? "(" + part() + std::string(pick({" / ", " % "})) + "(" + part() + " | 1u))"
                       : "((" + part() + " & 4095)" + std::string(pick({" / ", " % "})) + "((" +
                             part() + " & 255) + 1))";
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
    case 7:
    case 8:
        return bits(shape, depth);
    default:
        return "(" + expression({Kind::truth, 1}, depth - 1) + " ? " + part() + " : " + part() +
               ")";
    }
}

std::string RandomGenerator::bits(Shape shape, int depth) {
    const auto part = [&] { return expression(shape, depth - 1); };
    const std::string type = typeName(shape);
    switch (below(6)) {
    case 0:
        return type + "(bitCount(" + part() + "))";
    case 1:
        return type + "(" + std::string(pick({"findLSB", "findMSB"})) + "(" + part() + "))";
    case 2:
        return "bitfieldReverse(" + part() + ")";
    case 3:
        return "bitfieldExtract(" + part() + ", " + std::to_string(below(8)) + ", " +
               std::to_string(1 + below(8)) + ")";
    case 4:
        return "bitfieldInsert(" + part() + ", " + part() + ", " + std::to_string(below(8)) + ", " +
               std::to_string(1 + below(8)) + ")";
    default:
        return "(" + part() + std::string(pick({" << ", " >> "})) + "(" +
               expression({Kind::natural, shape.count}, depth - 1) + " & 7u))";
    }
}

std::string RandomGenerator::truth(Shape shape, int depth) {
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

std::string RandomGenerator::matrix(Shape shape, int depth) {
    const auto part = [&] { return expression(shape, depth - 1); };
    switch (below(8)) {
    case 0:
        return "(" + part() + std::string(pick({" + ", " - "})) + part() + ")";
    case 1:
        return "transpose(" + part() + ")";
    case 2:
        return "matrixCompMult(" + small(shape, part()) + ", " + small(shape, part()) + ")";
    case 3:
        return "(" + small(shape, part()) + " * " + small(shape, part()) + ")";
    case 4: {
        const Shape vector{Kind::number, shape.count};
        return "outerProduct(" + small(vector, expression(vector, depth - 1)) + ", " +
               small(vector, expression(vector, depth - 1)) + ")";
    }
    case 5: {
        const Shape vector{Kind::number, shape.count};
        std::string text = typeName(shape) + "(";
        for (uint32_t i = 0; i < shape.count; ++i) {
            text += (i == 0 ? "" : ", ") + small(vector, expression(vector, depth - 1));
        }
        return text + ")";
    }
    case 6:
        // Of another size: what lies outside is cut off or that of the unit matrix.
        return typeName(shape) + "(" + expression({Kind::matrix, 2 + below(3)}, depth - 1) + ")";
    default:
        return "(" + expression({Kind::truth, 1}, depth - 1) + " ? " + part() + " : " + part() +
               ")";
    }
}

std::string RandomGenerator::expression(Shape shape, int depth) {
    if (depth <= 0 || below(5) == 0) {
        return leaf(shape);
    }
    if (shape.count > 1 && shape.kind != Kind::matrix && below(4) == 0) {
        std::string text = typeName(shape) + "(";
        for (uint32_t left = shape.count; left > 0;) {
            const uint32_t taken = 1 + below(left == shape.count ? left - 1 : left);
            text += (left == shape.count ? "" : ", ") + expression({shape.kind, taken}, depth - 1);
            left -= taken;
        }
        return text + ")";
    }
    for (size_t i = 0; i < functions_.size(); ++i) {
        if (functions_[i].result == shape && functions_[i].references.empty() && below(3) == 0) {
            return "f" + std::to_string(i) + "(" + expression({Kind::number, 2}, depth - 1) + ", " +
                   expression({Kind::integer, 1}, depth - 1) + ")";
        }
    }
    switch (shape.kind) {
    case Kind::number:
        return number(shape, depth);
    case Kind::truth:
        return truth(shape, depth);
    case Kind::matrix:
        return matrix(shape, depth);
    default:
        return integer(shape, depth);
    }
}

} // namespace msl::tests
