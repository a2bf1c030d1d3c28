#include "accessfile/sql/Calendar.h"
#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Parser.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace accessfile::sql {

namespace {

/// Bounds of a tree: the walks over it are recursive.
constexpr int maximumNesting = 100;
constexpr int maximumDepth = 600;

class Nested
{
public:
    explicit Nested(int& level)
        : m_level(level)
    {
        if (++m_level > maximumNesting) {
            --m_level;
            throw tooComplex();
        }
    }
    ~Nested() { --m_level; }
    Nested(const Nested&) = delete;
    Nested& operator=(const Nested&) = delete;

private:
    int& m_level;
};

struct Level
{
    std::vector<std::pair<std::string_view, Operator>> operators;
};

/// Binary operators from the loosest to the tightest.
const std::array<Level, 6>& levels()
{
    static const std::array<Level, 6> all{{{{{"&", Operator::Concatenate}}},
                                           {{{"+", Operator::Add}, {"-", Operator::Subtract}}},
                                           {{{"MOD", Operator::Modulo}}},
                                           {{{"\\", Operator::IntegerDivide}}},
                                           {{{"*", Operator::Multiply}, {"/", Operator::Divide}}},
                                           {{{"^", Operator::Power}}}}};
    return all;
}

/// Words that cannot be the name of a column without brackets: an expression ends before them.
bool isReserved(const Token& token)
{
    static constexpr std::array<std::string_view, 26> words{
        "SELECT",  "FROM", "WHERE", "ORDER", "BY",    "AND",    "OR",    "NOT",     "XOR",
        "BETWEEN", "LIKE", "IN",    "IS",    "GROUP", "HAVING", "UNION", "INTO",    "CASE",
        "VALUES",  "SET",  "ASC",   "DESC",  "MOD",   "AS",     "ON",    "DISTINCT"};
    return token.type == Token::Type::Name &&
           std::any_of(words.begin(), words.end(), [&](std::string_view word) { return token.isWord(word); });
}

} // namespace

void Parser::failExpression() const
{
    refuseUnserved();
    throw expressionSyntax(m_lexer.statement().substr(std::min(m_clause, m_lexer.statement().size())));
}

ExpressionPointer Parser::make(Expression::Form form, std::size_t at) const
{
    auto node = std::make_unique<Expression>();
    node->form = form;
    node->at = at;
    node->end = m_lastEnd;
    return node;
}

void Parser::adopt(Expression& parent, ExpressionPointer operand)
{
    parent.depth = std::max(parent.depth, operand->depth + 1);
    if (parent.depth > maximumDepth)
        throw tooComplex();
    parent.end = std::max(parent.end, operand->end);
    parent.operands.push_back(std::move(operand));
}

ExpressionPointer Parser::clause()
{
    m_clause = m_token.at;
    return expression();
}

ExpressionPointer Parser::expression()
{
    const Nested nested(m_nesting);
    return junction(Expression::Form::Xor);
}

/// XOR below OR below AND; a chain of one of them is one node.
ExpressionPointer Parser::junction(Expression::Form form)
{
    const auto operand = [&] {
        return form == Expression::Form::Xor  ? junction(Expression::Form::Or)
               : form == Expression::Form::Or ? junction(Expression::Form::And)
                                              : negation();
    };
    const std::string_view word = form == Expression::Form::Xor ? "XOR" : form == Expression::Form::Or ? "OR" : "AND";
    const std::size_t at = m_token.at;
    ExpressionPointer first = operand();
    if (!m_token.isWord(word))
        return first;
    ExpressionPointer chain = make(form, at);
    adopt(*chain, std::move(first));
    while (acceptWord(word))
        adopt(*chain, operand());
    return chain;
}

ExpressionPointer Parser::negation()
{
    const std::size_t at = m_token.at;
    if (!acceptWord("NOT"))
        return comparison();
    const Nested nested(m_nesting);
    ExpressionPointer node = make(Expression::Form::Not, at);
    adopt(*node, negation());
    return node;
}

std::optional<Operator> Parser::comparisonOperator()
{
    static constexpr std::array<std::pair<std::string_view, Operator>, 7> symbols{{{"=", Operator::Equal},
                                                                                   {"<>", Operator::NotEqual},
                                                                                   {"!=", Operator::NotEqual},
                                                                                   {"<=", Operator::LessEqual},
                                                                                   {">=", Operator::GreaterEqual},
                                                                                   {"<", Operator::Less},
                                                                                   {">", Operator::Greater}}};
    for (const auto& [symbol, operation] : symbols) {
        if (acceptSymbol(symbol))
            return operation;
    }
    return std::nullopt;
}

ExpressionPointer Parser::comparison()
{
    const std::size_t at = m_token.at;
    ExpressionPointer left = arithmetic(0);
    for (;;) {
        if (const std::optional<Operator> operation = comparisonOperator()) {
            ExpressionPointer node = make(Expression::Form::Compare, at);
            node->operation = *operation;
            adopt(*node, std::move(left));
            adopt(*node, arithmetic(0));
            left = std::move(node);
            continue;
        }
        if (acceptWord("IS")) {
            ExpressionPointer node = make(Expression::Form::IsNull, at);
            node->negated = acceptWord("NOT");
            if (!acceptWord("NULL"))
                failExpression();
            adopt(*node, std::move(left));
            node->end = m_lastEnd;
            left = std::move(node);
            continue;
        }
        bool negated = false;
        if (m_token.isWord("NOT")) {
            const Token& following = peek();
            if (!following.isWord("LIKE") && !following.isWord("BETWEEN") && !following.isWord("IN"))
                failExpression();
            negated = acceptWord("NOT");
        }
        ExpressionPointer node;
        if (acceptWord("LIKE")) {
            node = make(Expression::Form::Like, at);
            adopt(*node, std::move(left));
            adopt(*node, arithmetic(0));
        } else if (acceptWord("BETWEEN")) {
            node = make(Expression::Form::Between, at);
            adopt(*node, std::move(left));
            adopt(*node, arithmetic(0));
            if (!acceptWord("AND"))
                throw Error(ErrorKind::Syntax, "Between operator without And in query expression.", -3100);
            adopt(*node, arithmetic(0));
        } else if (acceptWord("IN")) {
            node = make(Expression::Form::In, at);
            adopt(*node, std::move(left));
            if (!acceptSymbol("("))
                failExpression();
            refuseSelect();
            do
                adopt(*node, expression());
            while (acceptSymbol(","));
            if (!acceptSymbol(")"))
                failExpression();
            node->end = m_lastEnd;
        } else {
            return left;
        }
        node->negated = negated;
        left = std::move(node);
    }
}

ExpressionPointer Parser::arithmetic(int level)
{
    if (level == static_cast<int>(levels().size()))
        return unary();
    const std::size_t at = m_token.at;
    // A sign binds looser than a power and tighter than all else: -2 ^ 2 is -4.
    ExpressionPointer left = arithmetic(level + 1);
    for (;;) {
        const Operator* found = nullptr;
        for (const auto& [symbol, operation] : levels().at(static_cast<std::size_t>(level)).operators) {
            if (symbol == "MOD" ? acceptWord(symbol) : acceptSymbol(symbol)) {
                found = &operation;
                break;
            }
        }
        if (found == nullptr)
            return left;
        ExpressionPointer node = make(Expression::Form::Arithmetic, at);
        node->operation = *found;
        ExpressionPointer right = arithmetic(level + 1);
        const bool signedBase = *found == Operator::Power && left->form == Expression::Form::Negate;
        if (signedBase) {
            ExpressionPointer base = std::move(left->operands.front());
            left->operands.clear();
            adopt(*node, std::move(base));
            adopt(*node, std::move(right));
            adopt(*left, std::move(node));
        } else {
            adopt(*node, std::move(left));
            adopt(*node, std::move(right));
            left = std::move(node);
        }
    }
}

ExpressionPointer Parser::unary()
{
    const std::size_t at = m_token.at;
    if (acceptSymbol("-")) {
        const Nested nested(m_nesting);
        ExpressionPointer node = make(Expression::Form::Negate, at);
        adopt(*node, unary());
        return node;
    }
    if (acceptSymbol("+")) {
        const Nested nested(m_nesting);
        return unary();
    }
    return primary();
}

ExpressionPointer Parser::primary()
{
    const Token token = m_token;
    if (token.isSymbol("(")) {
        advance();
        refuseSelect();
        ExpressionPointer inner = expression();
        if (!acceptSymbol(")"))
            failExpression();
        return inner;
    }
    if (token.type == Token::Type::Name || token.type == Token::Type::QuotedName)
        return nameOrCall();

    ExpressionPointer node = make(Expression::Form::Literal, token.at);
    switch (token.type) {
    case Token::Type::Text:
        node->kind = Kind::Text;
        node->literal = token.text;
        break;
    case Token::Type::Date: {
        const std::optional<DateTime> date = parseDateLiteral(token.text);
        if (!date)
            throw dateSyntax(m_lexer.statement().substr(token.at));
        node->kind = Kind::Date;
        node->literal = *date;
        break;
    }
    case Token::Type::Number: {
        std::int32_t whole = 0;
        const char* const last = token.text.data() + token.text.size();
        if (const auto read = std::from_chars(token.text.data(), last, whole);
            read.ec == std::errc() && read.ptr == last) {
            node->kind = Kind::Integer;
            node->literal = whole;
            break;
        }
        double number = 0;
        if (std::from_chars(token.text.data(), last, number).ec != std::errc())
            throw overflow();
        node->kind = Kind::Double;
        node->literal = number;
        // A double keeps fifteen digits of a decimal number; more of them are kept as they are written.
        if (std::count_if(token.text.begin(), token.text.end(), [](char c) { return c >= '0' && c <= '9'; }) > 15) {
            if (const std::optional<Numeric> exact = parseDecimal(token.text))
                node->literal = *exact;
        }
        break;
    }
    default:
        failExpression();
    }
    advance();
    node->end = m_lastEnd;
    return node;
}

ExpressionPointer Parser::nameOrCall()
{
    const Token first = m_token;
    const bool nullWord = first.isWord("NULL");
    if (nullWord || first.isWord("TRUE") || first.isWord("FALSE")) {
        ExpressionPointer node = make(Expression::Form::Literal, first.at);
        if (!nullWord) {
            node->kind = Kind::Bool;
            node->literal = first.isWord("TRUE");
            node->truthLiteral = true;
        }
        advance();
        node->end = m_lastEnd;
        return node;
    }
    if (isReserved(first))
        failExpression();
    advance();
    if (first.type == Token::Type::Name && m_token.isSymbol("("))
        return call(first);

    ExpressionPointer node = make(Expression::Form::Name, first.at);
    node->name = first.text;
    if (acceptSymbol(".") || acceptSymbol("!")) {
        node->qualifier = std::move(node->name);
        if (acceptSymbol("*"))
            node->name = "*"; // All columns of the table; no column of that name can be found anywhere else.
        else if (atName())
            node->name = name();
        else
            failExpression();
    }
    node->end = m_lastEnd;
    return node;
}

ExpressionPointer Parser::call(const Token& function)
{
    static constexpr std::array<std::pair<std::string_view, Aggregate>, 5> aggregates{{{"COUNT", Aggregate::Count},
                                                                                       {"SUM", Aggregate::Sum},
                                                                                       {"AVG", Aggregate::Average},
                                                                                       {"MIN", Aggregate::Minimum},
                                                                                       {"MAX", Aggregate::Maximum}}};
    ExpressionPointer node = make(Expression::Form::Call, function.at);
    node->name = function.text;
    advance();
    refuseSelect();
    for (const auto& [word, aggregate] : aggregates) {
        if (!function.isWord(word))
            continue;
        node->form = Expression::Form::Aggregate;
        node->aggregate = aggregate;
    }
    if (node->form == Expression::Form::Aggregate && node->aggregate == Aggregate::Count && m_token.isSymbol("*")) {
        advance();
        if (!acceptSymbol(")"))
            failExpression();
    } else if (!acceptSymbol(")")) {
        do
            adopt(*node, expression());
        while (acceptSymbol(","));
        if (!acceptSymbol(")"))
            failExpression();
    } else if (node->form == Expression::Form::Aggregate) {
        failExpression();
    }
    if (node->form == Expression::Form::Aggregate && node->operands.size() > 1)
        failExpression();
    node->end = m_lastEnd;
    return node;
}

} // namespace accessfile::sql
