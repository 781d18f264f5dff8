// Lowering: the typed tree becomes the intermediate form. Every call is expanded in place with what
// is known of its arguments; references and pointers disappear into the places they name; locals
// become single-assignment values; control flow becomes structured blocks.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "msl/ir/builder.h"
#include "msl/msl.h"
#include "msl/sema/tree.h"
#include "msl/source/source.h"

namespace msl {

class Lowerer {
  public:
    Lowerer(ir::Module& module, Diagnostics& diagnostics);

    // Fills the module and describes its entry points. Valid only where no error was reported.
    void run(const tree::Unit& unit, Module& result);

  private:
    using Value = ir::Value;

    struct Step {
        bool dynamic = false;
        uint32_t index = 0; // or, where dynamic, the value that holds it
    };
    // Something stored, or a part of it.
    struct Place {
        // `words`: a buffer seen as 32-bit words, whose steps are summed up in an address
        // `shared`: the same among the words of the union that `whole` leads to
        // `chosen`: one of the `options`; which one, the value `base` says
        enum class Root : uint8_t { none, ssa, memory, buffer, words, shared, chosen, value };
        Root root = Root::none;
        uint8_t swizzleCount = 0; // components picked from the vector that the steps lead to
        uint8_t swizzle[4] = {};
        bool constantSpace = false;
        uint32_t base = 0; // an ssa variable, or a value
        const Type* rootType = nullptr;
        const Type* type = nullptr; // of what the steps lead to, before the swizzle
        std::vector<Step> steps;
        uint32_t offset = 0;          // of a place among words: bytes,
        Value address = ir::kNoValue; // and more bytes, known at run time
        std::shared_ptr<const Place> whole{};
        std::vector<Place> options{};

        bool hasAddress() const { return root == Root::words || root == Root::shared; }
    };
    // What a variable, or a part of one that holds resources, stands for.
    struct Binding {
        enum class Kind : uint8_t { none, ssa, place, texture, sampler, parts, alias, choice };
        Kind kind = Kind::none;
        uint32_t ssa = 0;
        Value resource = ir::kNoValue;
        uint32_t samplerIndex = UINT32_MAX; // of a constexpr sampler
        Place place;
        std::vector<Binding> parts{};  // of a struct or array that holds resources
        Value selector = ir::kNoValue; // of a choice: which of its parts is meant
        Binding* target = nullptr;     // of an alias, which is a reference to such a struct
        // Of a pointer that moves: the ssa variable that says how many elements it has gone from
        // its place; UINT32_MAX where it stays.
        uint32_t moved = UINT32_MAX;
    };
    struct Change {
        uint32_t variable = 0;
        Value value = ir::kNoValue;
    };
    // One way into a merge block, with the variables that differ from the construct's start.
    struct Edge {
        ir::BlockId from = ir::kNoBlock;
        bool returned = false;
        std::vector<Change> changes;
    };
    // A loop or switch that can be left from inside.
    struct Breakable {
        bool isLoop = false;
        size_t mark = 0;
        ir::BlockId breakTarget = ir::kNoBlock;
        ir::BlockId continueTarget = ir::kNoBlock;
        std::vector<Edge> breaks;
        std::vector<Edge> continues;
    };
    // One expansion of a function.
    struct Frame {
        const tree::Function* function = nullptr;
        std::vector<Binding> slots;
        std::vector<Breakable> breakables;
        uint32_t flag = 0;         // ssa variable: whether the function has returned
        uint32_t result = 0;       // ssa variable: what it returns
        Place resultPlace;         // what it refers to with its result
        uint32_t resultChoice = 0; // ssa variable: which of several such places it is
        Binding resultParts;       // its result, where that holds resources
        bool returned = false;
    };
    struct HoistedLoad {
        Value base = ir::kNoValue;
        std::vector<uint32_t> path;
        Value loaded = ir::kNoValue;
    };
    class Depth;

    // types.cpp
    ir::TypeId irType(const Type* type);
    ir::TypeId layoutType(const Type* type, Range range);
    bool isMemoryType(const Type* type) const;

    // places.cpp
    Place place(const tree::Expr* expr);
    Place placeAtDepth(const tree::Expr* expr);
    Place pointerTarget(const tree::Expr* expr);
    Place movedPlace(const Binding& pointer, Range range);
    Place pointerStep(const tree::Expr* expr);
    Place swizzledComponent(Place base, Value index, const Type* type);
    Place castTarget(const tree::Expr* expr);
    Place variablePlace(const tree::Expr* expr);
    Place valuePlace(const Type* type, Value value);
    Place spilled(const Place& place);
    void addStep(Place& place, Step step, const Type* type);
    void moveWords(Place& place, Step step, uint32_t elementSize);
    void addIndex(Place& place, const tree::Expr* index, const Type* type);
    void addOffset(Place& place, Value offset, Range range, const Type* type);
    Value load(const Place& place);
    Value loadWhole(const Place& place);
    Value loadParts(const Place& place, const Type* type, Range range);
    Value pointerOf(const Place& place, const Type* type);
    Value loadFrom(const Place& place, const Type* type);
    void store(const Place& place, Value value);
    Value replacePart(Value whole, const Place& place, size_t step, Value part);
    Value extractPart(Value whole, const Step& step);
    Value pickSwizzle(const Place& place, Value vector);
    void storeParts(const Place& place, const Type* type, Value value);
    Place globalPlace(const tree::Variable& variable);
    Place newMemory(const Type* type);

    // statements.cpp
    void statement(const tree::Stmt* stmt);
    void statementAtDepth(const tree::Stmt* stmt);
    void statements(std::span<tree::Stmt* const> list);
    void declareVariable(const tree::Stmt* stmt);
    void startMoving(Binding& pointer);
    void ifElse(const tree::Stmt* stmt, std::span<tree::Stmt* const> rest);
    void loop(const tree::Stmt* stmt);
    void multiway(const tree::Stmt* stmt);
    void leave(const tree::Stmt* stmt);
    void addResultPlace(Place place, Range range);
    bool afterReturn(std::span<tree::Stmt* const> rest);
    void breakTo(Breakable& target, std::vector<Edge>& edges, ir::BlockId block);
    bool live() const { return builder_.open() && !frame_->returned; }
    Edge edge(size_t mark);
    void rollBack(size_t mark);
    void merge(ir::BlockId block, std::vector<Edge>& edges);
    uint32_t newVariable(Value value);
    void setVariable(uint32_t variable, Value value);
    std::vector<uint32_t> loopVariables(const tree::Stmt* stmt);

    // expressions.cpp
    Value value(const tree::Expr* expr);
    Value valueAtDepth(const tree::Expr* expr);
    Value constant(const Type* type, uint64_t bits);
    Value convert(Value value, const Type* from, const Type* to);
    Value convertScalars(Value value, const Type* from, const Type* to, uint32_t count);
    Value wrapSmall(Value value, const Type* type);
    Value construct(const tree::Expr* expr);
    Value conditional(const tree::Expr* expr);
    Value logical(const tree::Expr* expr);
    Value choose(Value condition, const Type* type, const tree::Expr* a, const tree::Expr* b);
    Value assign(const tree::Expr* expr, Place* target);
    Value zeroOf(const Type* type);

    // operators.cpp
    Value binary(TokenKind op, const Type* operandA, const Type* operandB, Value a, Value b);
    Value matrixBinary(TokenKind op, const Type* operandA, const Type* operandB, Value a, Value b);
    Value unaryMinus(const Type* type, Value a);
    Value step(const tree::Expr* expr);

    // calls.cpp
    Value call(const tree::Expr* expr, Place* target = nullptr, Binding* parts = nullptr);
    void bindParameter(Frame& frame, const tree::Variable& parameter, const tree::Expr* argument);
    Value library(const tree::Expr* expr);

    // bindings.cpp
    Binding bound(const Type* type, const tree::Expr* init);
    Binding boundParts(const Type* type, const tree::Expr* init);
    Binding boundValue(const Type* type, Value value);
    Binding copied(const Type* type, const Binding& source);
    Binding* findBinding(const tree::Expr* expr);
    Place bindingPlace(const Type* type, const Binding& binding);
    void assignParts(const Type* type, Binding& target, const Binding& source, Range range);
    bool sameResource(const Binding& a, const Binding& b) const;

    // choices.cpp
    Binding* choice(std::vector<Binding> candidates, Value selector);
    Binding* chosenElement(const Binding& array, Value index);
    Binding* chosenPart(const Binding& whole, uint64_t index);
    Binding* chosenBranch(const tree::Expr* expr);
    Value chosenValue(const Type* type, const Binding& chosen);
    Place chosenPlace(std::vector<Place> options, Value selector);
    Value onEachOption(Value selector, size_t count, bool gives,
                       const std::function<Value(size_t)>& work);
    const Binding* openChoice(const tree::Expr* operand, const Binding* settled);
    Value onEachCandidate(const tree::Expr* expr, const Binding& chosen, const Binding*& settled);

    // groups.cpp
    Value subgroup(uint32_t instruction, ir::TypeId type, std::initializer_list<Value> operands,
                   std::optional<uint32_t> group = std::nullopt);
    Value groupNumber(ir::BuiltIn builtIn);
    Value ofQuad(ir::TypeId type, Value value, Value index);
    Value quadFunction(const tree::Expr* expr, const std::vector<Value>& x);
    Value groupFunction(const tree::Expr* expr, const std::vector<Value>& x);

    // atomics.cpp
    Value atomic(const tree::Expr* expr);

    // bits.cpp
    std::vector<Value> wordsOf(Value value, const Type* type);
    Value fromWords(const std::vector<Value>& words, const Type* type);

    // words.cpp
    bool needsWords(const Type* type) const;
    Value wordIndex(const Place& place, uint32_t offset);
    Value wordPointer(const Place& place, uint32_t offset);
    Value wordAt(const Place& place, uint32_t offset);
    Value bitOffset(const Place& place, uint32_t offset, uint32_t size);
    Value loadWords(const Place& place, const Type* type);
    Value loadScalar(const Place& place, const Type* type, uint32_t offset);
    void storeWords(const Place& place, const Type* type, Value value);
    Value atomicOperation(ir::Op op, ir::TypeId type, Value pointer, Value operand);
    void storeScalar(const Place& place, const Type* type, uint32_t offset, Value value);
    void putWord(const Place& place, uint32_t offset, Value word);

    // unions.cpp
    static bool isUnion(const Type* type);
    static const Type* unionChunk(const Type* type);
    void enterUnion(Place& place);
    Value loadUnion(const Place& place, const Type* type);
    void storeUnion(const Place& place, const Type* type, Value value);
    Value unionOf(const Type* type, uint32_t field, Value value);
    Value isWord(Value wanted, uint32_t index);
    Value sharedWord(const Place& place, uint32_t offset);
    void setSharedWord(const Place& place, uint32_t offset, Value word);

    // library.cpp
    Value special(const tree::Expr* expr, const std::vector<Value>& x);
    Value floatSpecial(Special what, const tree::Expr* expr, const std::vector<Value>& x);
    Value integerSpecial(Special what, const Type* type, const std::vector<Value>& x);
    Value packSpecial(Special what, const std::vector<Value>& x);
    Value minMax(const Type* type, bool max, Value a, Value b);
    Value floatSplat(ir::TypeId type, float number);
    Value intSplat(ir::TypeId type, uint64_t number);

    // textures.cpp
    Value texture(const tree::Expr* expr);
    Value textureResource(const tree::Expr* expr);
    Value samplerResource(const tree::Expr* expr);
    uint32_t samplerIndex(const tree::Expr* expr);
    ir::TypeId texelType(const Type& type, ir::TypeId image);
    Value readTexel(const tree::Expr* expr, Value variable);
    Value readCubeTexel(const tree::Expr* expr, Value variable);
    Value cubeDirection(const tree::Expr* expr, Value image, Value level);
    void writeTexel(const tree::Expr* expr, Value variable);
    Value queryTexture(const tree::Expr* expr, Value variable);
    Value sampledImage(const tree::Expr* expr, Value variable);
    Value queryLod(const tree::Expr* expr, Value variable, Value coordinate);
    Value sampleTexture(const tree::Expr* expr, Value variable);
    Value textureCoordinate(const tree::Expr* expr, bool integer);
    Value fromTexel(const Type* texture, Value texel, const Type* result);

    // entry.cpp, resources.cpp, interface.cpp
    void entryPoint(const tree::Function& function, Module& result);
    bool entryParameter(const tree::Variable& parameter, Binding& binding, EntryPoint& entry);
    bool gatheredParameter(const tree::Variable& parameter, Binding& binding, EntryPoint& entry);
    bool isTaken(std::string_view kind, uint32_t index, const EntryPoint& entry) const;
    uint32_t freeIndex(std::string_view kind, const EntryPoint& entry) const;
    uint32_t descriptorSet() const;
    ir::TypeId imageType(const Type* type);
    static TextureBinding describe(const Type* type, uint32_t index);
    Binding opaqueResource(const Type* type, uint32_t number);
    std::optional<Binding> bufferResource(const Type* held, bool many, AddressSpace space,
                                          bool readOnly, uint32_t number, Range range);
    std::optional<Binding> argumentBuffer(const Type* type, const Place& data, uint32_t buffer,
                                          uint32_t& next, Range range, EntryPoint& entry);
    bool isStageInput(std::string_view attribute) const;
    bool resourceParameter(const tree::Variable& parameter, uint32_t index, Binding& binding,
                           EntryPoint& entry);
    std::optional<Value> inputValue(const Type* type, std::span<const ast::Attribute> attributes,
                                    Name name, Range range);
    std::optional<Value> stageIn(const tree::Variable& parameter);
    std::optional<Value> stageInput(const Type* type, Range range);
    std::optional<Value> clipDistances(const Type* type, Range range);
    bool storeResult(const tree::Function& function);
    bool storeMembers(const Type* type, Range range, Value result);
    bool outputValue(const Type* type, std::span<const ast::Attribute> attributes, Name name,
                     Range range, Value value);
    Value interfaceVariable(ir::TypeId type, ir::Global global);
    uint32_t varyingLocation(Name name);
    ir::TypeId interfaceType(const Type* type);
    Value constantSampler(uint32_t index);
    std::optional<uint32_t> attributeNumber(const ast::Attribute& attribute);
    void useGlobal(Value variable);

    bool spend(Range range);
    bool spendWays(size_t ways, size_t values);
    void error(Range range, std::string message) { diagnostics_.error(range, std::move(message)); }

    ir::Module& module_;
    ir::Builder builder_;
    Diagnostics& diagnostics_;
    const tree::Unit* unit_ = nullptr;
    ir::Function* function_ = nullptr;
    Stage stage_ = Stage::fragment;
    Frame* frame_ = nullptr;
    ir::BlockId prologue_ = ir::kNoBlock;
    std::vector<Value> current_; // of each ssa variable
    struct Logged {
        uint32_t variable;
        Value before;
    };
    std::vector<Logged> log_;
    std::vector<uint32_t> stamps_; // of each ssa variable: the last collection that saw it
    uint32_t stamp_ = 0;
    // Memory that merges share.
    std::vector<uint32_t> slots_; // of each ssa variable: where it stands in the next
    std::vector<uint32_t> mergeVariables_;
    std::vector<Value> mergeValues_;
    std::vector<uint32_t> mergePairs_;
    std::vector<Binding> globals_;
    std::vector<HoistedLoad> hoisted_;
    std::deque<Binding> choices_;
    // While a texture's operation is lowered for each candidate of a choice: its operands, the
    // derivatives of its coordinate, and the candidates at hand.
    std::unordered_map<const tree::Expr*, Value> held_;
    std::optional<std::pair<Value, Value>> gradients_;
    const Binding* settledTexture_ = nullptr;
    const Binding* settledSampler_ = nullptr;
    std::unordered_map<const Type*, ir::TypeId> types_;
    std::unordered_map<const Type*, ir::TypeId> layouts_;
    std::vector<Name> varyings_;
    std::vector<Value> constantSamplers_;
    std::vector<uint32_t> usedSamplers_;
    uint32_t depth_ = 0;
    uint32_t steps_ = 0;
    uint64_t mergedValues_ = 0;
    Range spentOn_; // what is being lowered
    bool stopped_ = false;
    bool usesInt64_ = false;
    bool usesSubgroups_ = false;
};

} // namespace msl
