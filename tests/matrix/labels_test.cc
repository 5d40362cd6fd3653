// The expression each front-end writes and the message and location of each
// check, as the whole stderr text.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "matrix/operations.h"
#include "tests/matrix/scenario.h"

namespace {

using namespace matrix_test;

class LabelsDeathTest : public Scenario {};

struct Case {
  std::function<void()> run;
  std::string stderr_text;
};

void ExpectAll(const std::vector<Case> &cases) {
  for (const Case &c : cases) {
    SCOPED_TRACE(c.stderr_text);
    EXPECT_EXIT(c.run(), testing::ExitedWithCode(0), Fatal(c.stderr_text));
  }
}

// A matrix with a class code outside 0 to 5 (real storage underneath).
Matrix *Bad(const char *name) { return MatSetClass(Real(name, 2, 2), 9); }

TEST_F(LabelsDeathTest, TwoOperandChecks) {
  Matrix *a = Real("A", 2, 2), *b = Real("B", 3, 3), *w = Real("W", 2, 3);
  Matrix *v = Real("V", 3, 1), *h = Real("H", 1, 3), *e = Real("E", 0, 3), *c = Comp("C", 2, 2);
  ExpectAll({
      {[=] { MatAdd(a, b); }, "A(2x2) + B(3x3) : Not same size in MatAdd()."},
      {[=] { MatSub(a, b); }, "A(2x2) - B(3x3) : Not same size in MatSub()."},
      {[=] { MatMul(w, w); }, "W(2x3) * W(2x3) : Inconsistent size in MatMul()."},
      {[=] { MatMulElem(a, b); }, "A(2x2) .* B(3x3) : Not same size in MatMulElem()."},
      {[=] { MatDivElem(a, w); }, "A(2x2) ./ W(2x3) : Not same size in MatDivElem()."},
      {[=] { MatVectorProduct(e, v); },
       "vectorprod(E(0x3), V(3x1)) : Zero-size matrix in MatVectorProduct()."},
      {[=] { MatVectorProduct(a, a); },
       "vectorprod(A(2x2), A(2x2)) : Not a 3x1 nor a 1x3 vector in MatVectorProduct()."},
      {[=] { MatVectorProduct(v, h); },
       "vectorprod(V(3x1), H(1x3)) : Not same size in MatVectorProduct()."},
      {[=] { MatCatRow(a, b); }, "[A(2x2), B(3x3)] : Inconsistent row number in MatCatRow()."},
      {[=] { MatCatColumn(w, a); },
       "[[W(2x3)][A(2x2)]] : Inconsistent column number in MatCatColumn()."},
      {[=] { MatRealAndImag(a, w); }, "(A(2x2), W(2x3)) : Not same size in MatRealAndImag()."},
      {[=] { MatRealAndImag(a, c); },
       "(A(2x2), C(2x2)) : Not appropriate class matrices in MatRealAndImag()."},
      {[=] { MatRealAndImag(c, c); },
       "(C(2x2), C(2x2)) : Not appropriate class matrices in MatRealAndImag()."},
      {[=] { MatPowElemEach(a, b); }, "A(2x2) .^ B(3x3) : Not same size in MatPowElemEach()."},
      {[=] { MatPowElemEach(a, c); },
       "A(2x2) .^ C(2x2) : Not a real index matrix in MatPowElemEach()."},
      {[=] { MatRemElemEach(a, c); },
       "rem(A(2x2), C(2x2)) : Not a real matrix in MatRemElemEach()."},
      {[=] { MatRemElemEach(a, b); }, "rem(A(2x2), B(3x3)) : Not same size in MatRemElemEach()."},
      {[=] { MatAdd(Bad("X"), a); }, "X(2x2) + A(2x2) : Incorrect class matrix in MatAdd()."},
      {[=] { MatMul(a, Bad("X")); }, "A(2x2) * X(2x2) : Incorrect class matrix in MatMul()."},
      {[=] { MatCatRow(Bad("X"), Bad("Y")); },
       "[X(2x2), Y(2x2)] : Incorrect class matrix in MatCatRow()."},
      {[=] { MatRealAndImag(Bad("X"), Bad("Y")); },
       "(X(2x2), Y(2x2)) : Incorrect class matrix in MatRealAndImag()."},
  });
}

TEST_F(LabelsDeathTest, ScalarAndOneOperandChecks) {
  Matrix *w = Real("W", 2, 3), *c = Comp("C", 2, 2);
  Complex *z = CompSetStatus(CompDef("z", 1, 2), 2);
  ExpectAll({
      {[=] { MatAdd_double(Bad("A"), 1.5); },
       "A(2x2) .+ 1.5 : Incorrect class matrix in MatAdd_double()."},
      {[=] { MatAdd_Complex(Bad("A"), z); },
       "A(2x2) .+ z(1,2) : Incorrect class matrix in MatAdd_Complex()."},
      {[=] { MatSub_double(Bad("A"), 2); },
       "A(2x2) .- 2 : Incorrect class matrix in MatSub_double()."},
      {[=] { MatSub_double(2, Bad("A")); },
       "2 .- A(2x2) : Incorrect class matrix in MatSub_double()."},
      {[=] { MatSub_Complex(Bad("A"), z); },
       "A(2x2) .- z(1,2) : Incorrect class matrix in MatSub_Complex()."},
      {[=] { MatSub_Complex(z, Bad("A")); },
       "z(1,2) .- A(2x2) : Incorrect class matrix in MatSub_Complex()."},
      {[=] { MatScale(Bad("A"), 0.25); }, "A(2x2) * 0.25 : Incorrect class matrix in MatScale()."},
      {[=] { MatScaleSelf(Bad("A"), 3); },
       "A(2x2) * 3 : Incorrect class matrix in MatScaleSelf()."},
      {[=] { MatScaleC(c, nullptr); },
       "C(2x2) * (NULL,NULL) : Scale is null complex in MatScaleC()."},
      {[=] { MatScaleC(Bad("A"), z); }, "A(2x2) * z(1,2) : Incorrect class matrix in MatScaleC()."},
      {[=] { MatPow(w, 2); }, "W(2x3)^2 : Not a square matrix in MatPow()."},
      {[=] { MatPow(Bad("A"), 2); }, "A(2x2)^2 : Incorrect class matrix in MatPow()."},
      {[=] { MatPow(c, -1); },
       "C(2x2)^-1 : Negative matrix power is not available yet in MatPow()."},
      {[=] { MatPowElem(Bad("A"), 3); }, "A(2x2).^3 : Incorrect class matrix in MatPowElem()."},
      {[=] { MatPowElemToReal(Bad("A"), 0.5); },
       "A(2x2).^0.5 : Incorrect class matrix in MatPowElemToReal()."},
      {[=] { MatPowElemToReal(Bad("A"), z); },
       "A(2x2).^z(1,2) : Incorrect class matrix in MatPowElemToReal()."},
      {[=] { MatRemElem(c, 2); }, "rem(C(2x2), 2) : Not a real matrix in MatRemElem()."},
      {[=] { MatInvElem(Bad("A")); }, "A(2x2).~ : Incorrect class matrix in MatInvElem()."},
      {[=] { MatTrans(Bad("A")); }, "A(2x2)' : Incorrect class matrix in MatTrans()."},
      {[=] { MatNegate(Bad("A")); }, "- A(2x2) : Incorrect class matrix in MatNegate()."},
      {[=] { MatIncrement(Bad("A")); }, "A(2x2)++ : Incorrect class matrix in MatIncrement()."},
      {[=] { MatDecrement(Bad("A")); }, "A(2x2)-- : Incorrect class matrix in MatDecrement()."},
      {[=] { MatConj(Bad("A")); }, "conj(A(2x2)) : Incorrect class matrix in MatConj()."},
      {[=] { MatConjTrans(Bad("A")); }, "A(2x2)# : Incorrect class matrix in MatConjTrans()."},
      {[=] { MatRealToComp(Bad("A")); },
       "Incorrect class matrix for 'A(2 x 2)' in MatRealToComp()."},
  });
  CompUndef(z);
}

// The polynomial and rational arithmetic arms report, with the label.
TEST_F(LabelsDeathTest, PendingArithmeticArms) {
  Matrix *p = Make("P", kPoly, 2, 2, {1, 2, 3, 4}), *r = Make("R", kCompRat, 2, 2, {1, 2, 3, 4});
  const std::string poly = " : Polynomial matrix arithmetic is not available yet in ";
  const std::string rat = " : Rational matrix arithmetic is not available yet in ";
  ExpectAll({
      {[=] { MatSub(p, p); }, "P(2x2) - P(2x2)" + poly + "MatSub()."},
      {[=] { MatMul(p, r); }, "P(2x2) * R(2x2)" + rat + "MatMul()."},
      {[=] { MatScale(p, 2); }, "P(2x2) * 2" + poly + "MatScale()."},
      {[=] { MatPow(r, 2); }, "R(2x2)^2" + rat + "MatPow()."},
      {[=] { MatIncrement(p); }, "P(2x2)++" + poly + "MatIncrement()."},
      {[=] { MatRealAndImag(p, p); }, "(P(2x2), P(2x2))" + poly + "MatRealAndImag()."},
  });
}

}  // namespace
