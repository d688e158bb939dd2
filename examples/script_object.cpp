// A transform as the scripts of a host see it: an object of type "Transform" with one method.

#include <gsl_TransformIntObj.h>
#include <nex_CommandException.h>
#include <omu_PrimTuple.h>

#include <cstddef>
#include <cstdio>
#include <memory>

namespace {

/// Calls a method by its name, as a script does, and prints the result or the message.
void Call(omu_InterfaceObj& object, const char* method) {
  try {
    const std::unique_ptr<omu_Primitive> result(object.CallMethod(method, omu_PrimTuple()));
    std::printf("%s() = %s\n", method, result->AsString().CStr());
  } catch (const nex_CommandException& e) {
    std::printf("%s() failed: %s\n", method, e.what());
  }
}

} // namespace

int main() {
  gsl_Matrix placement;
  placement.SetRotationVectors({0.0, 1.0, 0.0}, {-1.0, 0.0, 0.0}, {0.0, 0.0, 1.0});
  placement.SetTranslation({5.0, 6.0, 7.0});

  omu_Shortcut path("model.instances['wheel'].transform");
  gsl_TransformIntObj transform(path, placement, "the left wheel");
  std::printf("%s\n", transform.AsString().CStr());
  for (const cow_String& name : transform.MethodList())
    std::printf("it has the method %s\n", name.CStr());

  // The images of the X, Y and Z axes, then the image of the origin.
  Call(transform, "matrix");

  // In C++ the numbers are in a tuple.
  const std::unique_ptr<omu_Primitive> result(transform.CallMethod("matrix", omu_PrimTuple()));
  const auto& numbers = dynamic_cast<const omu_PrimTuple&>(*result);
  const std::size_t origin = 9;
  std::printf("the origin moves to (%g, %g, %g)\n", numbers.Number(origin),
              numbers.Number(origin + 1), numbers.Number(origin + 2));

  // A mistake in a script is an exception with a message for its author.
  Call(transform, "invert");
  path.Expire(); // the wheel is deleted
  Call(transform, "matrix");
}
