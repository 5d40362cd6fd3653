// The expression each front-end writes and the message and location of each
// check, as the whole stderr text.
#include "matrix/block.h"
#include "matrix/operations.h"
#include "matrix/polynomial_matrix.h"
#include "tests/matrix/scenario.h"

using LabelsDeathTest = Scenario;

TEST_F(LabelsDeathTest, EveryFrontEndReportsItsExpression) {
  Matrix *a = Make("A", kReal, 2, 2), *b = Make("B", kReal, 3, 3), *w = Make("W", kReal, 2, 3);
  Matrix *v = Make("V", kReal, 3, 1), *h = Make("H", kReal, 1, 3), *e = Make("E", kReal, 0, 3);
  Matrix *c = Make("C", kComplex, 2, 2), *p = Make("P", kPoly, 2, 2);
  Matrix *r = Make("R", kCompRat, 2, 2), *x = MatSetClass(Make("X", kReal, 2, 2), 9);
  Complex *z = CompSetStatus(CompDef("z", 1, 2), 2);
  Polynomial *q = PolySetStatus(PolySetName(PolyMonomial(1, nullptr), "q"), 2);
  Rational *g = RatSetStatus(RatSetName(RatInvPoly(q), "g"), 2);
  ExpectReports({
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
      {[=] { MatPowElemEach(a, c); },
       "A(2x2) .^ C(2x2) : Not a real index matrix in MatPowElemEach()."},
      {[=] { MatRemElemEach(a, c); },
       "rem(A(2x2), C(2x2)) : Not a real matrix in MatRemElemEach()."},
      {[=] { MatRemElem(c, 2); }, "rem(C(2x2), 2) : Not a real matrix in MatRemElem()."},
      {[=] { MatScaleC(c, nullptr); },
       "C(2x2) * (NULL,NULL) : Scale is null complex in MatScaleC()."},
      {[=] { MatPow(w, 2); }, "W(2x3)^2 : Not a square matrix in MatPow()."},
      // Class codes outside 0 to 5 and the labels no other report shows.
      {[=] { MatAdd(x, a); }, "X(2x2) + A(2x2) : Incorrect class matrix in MatAdd()."},
      {[=] { MatAdd_Complex(x, z); },
       "X(2x2) .+ z(1,2) : Incorrect class matrix in MatAdd_Complex()."},
      {[=] { MatSub_double(2, x); }, "2 .- X(2x2) : Incorrect class matrix in MatSub_double()."},
      {[=] { MatScaleC(x, z); }, "X(2x2) * z(1,2) : Incorrect class matrix in MatScaleC()."},
      {[=] { MatPowElem(x, 3); }, "X(2x2).^3 : Incorrect class matrix in MatPowElem()."},
      {[=] { MatInvElem(x); }, "X(2x2).~ : Incorrect class matrix in MatInvElem()."},
      {[=] { MatNegate(x); }, "- X(2x2) : Incorrect class matrix in MatNegate()."},
      {[=] { MatTrans(x); }, "X(2x2)' : Incorrect class matrix in MatTrans()."},
      {[=] { MatConjTrans(x); }, "X(2x2)# : Incorrect class matrix in MatConjTrans()."},
      {[=] { MatRealToComp(x); }, "Incorrect class matrix for 'X(2 x 2)' in MatRealToComp()."},
      // The polynomial and rational front-ends; the labels of MatEvalP and
      // MatEvalR have no closing parenthesis.
      {[=] { MatEval(a, 1); }, "eval(A(2x2), 1) : Not a polynomial nor rational matrix in MatEval()."},
      {[=] { MatEvalC(e, z); }, "eval(E(0x3), z(1,2)) : Zero-size matrix in MatEvalC()."},
      {[=] { MatEvalP(a, q); },
       "eval(A(2x2), q(s^1) : Not a polynomial nor rational matrix in MatEvalP()."},
      {[=] { MatEvalR(c, g); },
       "eval(C(2x2), g(s^0/s^1) : Not a polynomial nor rational matrix in MatEvalR()."},
      {[=] { MatEvalM(p, w); }, "eval(P(2x2), W(2x3)) : Not a square matrix in MatEvalM()."},
      {[=] { MatEvalMElem(p, b); }, "eval(P(2x2), B(3x3)) : Not same size in MatEvalMElem()."},
      {[=] { MatEvalM(r, w); }, "eval(R(2x2), W(2x3)) : Not a square matrix in MatEvalM()."},
      {[=] { MatAdd_Polynomial(x, q); },
       "X(2x2) .+ q(s^1) : Incorrect class matrix in MatAdd_Polynomial()."},
      {[=] { MatSub_Rational(g, x); },
       "g(s^0/s^1) .- X(2x2) : Incorrect class matrix in MatSub_Rational()."},
      {[=] { MatScaleP(x, q); }, "X(2x2) * q(s^1) : Incorrect class matrix in MatScaleP()."},
      {[=] { MatScaleR(x, g); }, "X(2x2) * g(s^0/s^1) : Incorrect class matrix in MatScaleR()."},
      {[=] { MatSetVar(a, "z"); }, "Incorrect class matrix for 'A(2 x 2)' in MatSetVar()."},
      {[=] { MatPowElemToReal(p, 0.5); },
       "P(2x2).^0.5 : Incorrect class matrix in MatPowElemToReal()."},
      {[=] { MatPow(r, -1); },
       "R(2x2)^-1 : Incorrect class matrix in MatPow()."},
      // Cut, put and parts. The invalid block texts are the message itself,
      // so the operands are described after them.
      {[=] { MatCut(e, 1, 1, 1, 1); }, "E(0x3)(1:1,1:1) : Zero-size matrix in MatCut()."},
      {[=] { MatCut(a, 0, 1, 1, 1); },
       "A(2x2)(0:1,1:1) is invalid sub-matrix for 'A(2 x 2)' in MatCut()."},
      {[=] { MatCut(x, 1, 1, 1, 1); }, "X(2x2)(1:1,1:1) : Incorrect class matrix in MatCut()."},
      {[=] { MatPut(a, 0, 1, v); },
       "A(0:2, 1:1) is invalid sub-matrix for 'A(2 x 2)' and 'V(3 x 1)' in MatPut()."},
      {[=] { MatPut(a, 2, 2, e); },
       "A(2:1, 2:4) is invalid sub-matrix for 'A(2 x 2)' and 'E(0 x 3)' in MatPut()."},
      {[=] { MatPut(a, 1, 1, x); },
       "A(2x2)(1:2, 1:2) = X(2x2) : Incorrect class matrix in MatPut()."},
      {[=] { MatImagPart(a); }, "Im(A(2x2)) : Not a complex matrix in MatImagPart()."},
      {[=] { MatImagPart(e); }, "Im(E(0x3)) : Zero-size matrix in MatImagPart()."},
      {[=] { MatRealPart(e); }, "Re(E(0x3)) : Zero-size matrix in MatRealPart()."},
  });
  MatSetClass(x, kReal);
  CompUndef(z);
  RatUndef(g);
  PolyUndef(q);
}
