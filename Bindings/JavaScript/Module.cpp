// What the WebAssembly module gives to JavaScript: detection of the text in one buffer, piece by piece.
//
// The buffer, the place in which a walk stands, and the answer are all in memory that JavaScript sees, so
// that a call neither allocates nor converts anything. JavaScript keeps the places of walks that take turns.
#include "Margin.h"

#define EXPORT(name) extern "C" __attribute__((export_name(name)))

namespace
{
char s_piece[1 << 14];
WalkPosition s_position;

constexpr int CODES[] = {ENCODE_UTF8, ENCODE_GBK, ENCODE_BIG5, ENCODE_UNICODE};
enum Name { NONE = 0, ASCII = 5 };  // between them the place in CODES, plus 1

unsigned NameOf(const Answer& answer)
{
    if (answer.ascii) return ASCII;
    for (unsigned i = 0; i < 4; ++i)
        if (answer.code == CODES[i]) return i + 1;
    return NONE;
}

// Of the encodings that are not the answer, the one with the highest sum.
unsigned RunnerUp(const Scores& scores, int code)
{
    const unsigned sums[] = {scores.sumUtf8, scores.sumGbk, scores.sumBig5, scores.sumUnicode};
    unsigned best = NONE;
    for (unsigned i = 0; i < 4; ++i)
        if (CODES[i] != code &&
            (best == NONE || static_cast<int>(sums[i]) > static_cast<int>(sums[best - 1])))
            best = i + 1;
    return best;
}
}  // namespace

EXPORT("piece") char* Piece()
{
    return s_piece;
}

EXPORT("pieceSize") unsigned PieceSize()
{
    return sizeof s_piece;
}

EXPORT("position") WalkPosition* Position()
{
    return &s_position;
}

EXPORT("positionSize") unsigned PositionSize()
{
    return sizeof s_position;
}

EXPORT("enoughMargin") int EnoughMargin()
{
    return ENOUGH_MARGIN;
}

EXPORT("useModel") int UseModelAt(char const* bytes, unsigned long size)
{
    return CodeTrans_UseModel(bytes, size);
}

EXPORT("begin") void Begin()
{
    s_position = {};
}

// Walks on over the first `length` bytes of the buffer. Returns whether the rest of the text still matters.
EXPORT("walk") bool WalkPiece(unsigned long length)
{
    WalkOn(s_piece, length, s_position);
    return s_position.scores.decidedCode == 0;
}

// The answer as the walk stands: bits 0-2 name the encoding, 3-9 are the margin, 10-11 the length of the mark
// with which the first `length` bytes of the buffer begin, 12-14 the encoding that came next.
EXPORT("answer") unsigned AnswerNow(unsigned long length)
{
    const Scores& scores = s_position.scores;
    const Answer answer = AnswerOf(scores);
    const auto mark = static_cast<unsigned>(MarkLength(answer.code, s_piece, length));
    return NameOf(answer) | static_cast<unsigned>(answer.margin) << 3 | mark << 10 |
           RunnerUp(scores, answer.code) << 12;
}

// The answer for a text that is whole in the buffer.
EXPORT("detect") unsigned Detect(unsigned long length)
{
    Begin();
    WalkPiece(length);
    return AnswerNow(length);
}
