// Where does a point end up? Takes the numbers of a point as arguments, and lets the calculator
// turn and move it.
#include <kelcalc.h>
#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: embed X Y Z\n";
    return 2;
  }
  kel::Calculator calculator;
  calculator.OnOutput([](std::string_view text) { std::cout << text; });
  calculator.OnFailure([](const kel::Failure& failure) {
    std::cerr << failure.program << ':' << failure.line << ':' << failure.column << ": "
              << failure.message << '\n';
  });

  calculator.Set("place",
                 kel::Value::Point(std::atof(argv[1]), std::atof(argv[2]), std::atof(argv[3])));
  const kel::Outcome outcome = calculator.Run(
      "r(0, 0, 1, 90) ;m turn :  [ a quarter turn about the z axis ]\n"
      "turn place * v(0, 0, 5) + moved :\n"
      "moved #\n");
  if (!outcome) return 1;

  const kel::Value moved = *calculator.Get("moved");
  std::cout << "its height is " << moved.numbers[2] << '\n';
  return 0;
}
