// The generator behind randomGlsl, apart so that its expressions and its statements can stand in
// files of their own.
#pragma once

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/msl/conformance/random_glsl.h"

namespace msl::tests {

enum class Kind { number, integer, natural, truth, matrix };

// Of a matrix, which is square, `count` is the number of its columns.
struct Shape {
    Kind kind = Kind::number;
    uint32_t count = 1;
    bool operator==(const Shape&) const = default;
};

// A variable or a member of one.
struct Variable {
    std::string name;
    Shape shape;
    bool writable = true;
    uint32_t length = 0; // of an array, a power of two; 0 for what is none
};

struct Struct {
    std::string name;
    std::vector<Variable> members;
};

// A function takes a vec2 and an int, and what follows by reference.
struct Callee {
    Shape result;
    std::vector<Shape> references;
};

// Floats stay on multiples of small powers of two and within bounds, and matrices hold small whole
// numbers, so that two compilers that order operations differently still agree.
class RandomGenerator {
  public:
    explicit RandomGenerator(uint32_t seed) : random_(seed) {}
    RandomGlsl run();

  private:
    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_() % bound); }
    std::string_view pick(std::initializer_list<std::string_view> choices) {
        return choices.begin()[below(static_cast<uint32_t>(choices.size()))];
    }
    static std::string typeName(Shape shape);
    Shape anyShape();

    // random_expressions.cpp
    std::string leaf(Shape shape);
    std::string element(const Variable& variable);
    std::string expression(Shape shape, int depth);
    std::string number(Shape shape, int depth);
    std::string integer(Shape shape, int depth);
    std::string bits(Shape shape, int depth);
    std::string truth(Shape shape, int depth);
    std::string matrix(Shape shape, int depth);
    std::string small(Shape shape, const std::string& text);
    std::string bounded(Shape shape, const std::string& text);

    // random_glsl.cpp
    std::string function(uint32_t index);
    std::string structure(uint32_t index);
    void declare(Shape shape);
    void declareArray();
    void declareStruct();
    void callWithReferences();
    void branch(int depth);
    void loop(int depth);
    void multiway(int depth);
    void assign();
    void statements(int count, int depth);
    void statement(int depth);
    std::string newName(std::string_view prefix) {
        return std::string(prefix) + std::to_string(names_++);
    }
    void line(const std::string& text) { body_ += text + "\n"; }

    std::mt19937 random_;
    std::vector<Variable> variables_;
    std::vector<Struct> structs_;
    std::vector<Callee> functions_;
    std::string body_;
    uint32_t names_ = 0;
};

} // namespace msl::tests
