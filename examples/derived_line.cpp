// An axis class of a host: it adds a speed to a line, and is stored and read as its own class.

#include <cls_MetadataRegistrar.h>
#include <cls_ReadVisitor.h>
#include <cls_WriteVisitor.h>
#include <gsl_RecordStore.h>
#include <gsl_StLine.h>
#include <gsl_utils.h>

#include <cstdio>
#include <memory>

namespace {

class Spindle : public gsl_StLine {
public:
  static constexpr unsigned int TypeId() { return 0x7F000001u; } // a number of the host's own

  Spindle(const gsl_Point& p, const gsl_Vector& d, double speed)
      : gsl_StLine(p, d), m_speed(speed) {}
  explicit Spindle(const cls_ReadVisitor& visitor)
      : gsl_StLine(cls_ReadVisitor(visitor, {-1, "_line"})),
        m_speed(visitor.ReadDouble({-1, "_speed"}, 0.0)) {}

  void DBWrite(const cls_WriteVisitor& visitor) const override {
    if (visitor.StartWrite(TypeId(), Uid()) == 0) return;
    gsl_StLine::DBWrite(cls_WriteVisitor(visitor, {-1, "_line"}));
    visitor.WriteDouble({-1, "_speed"}, m_speed);
  }
  static void InitializeMetadata(cls_ClassRegistrar& registrar) {
    registrar.AddClassMD(new cls_TypeAdapter<Spindle>("Spindle", 1, 1u))
        .AddBase(gsl_StLine::TypeId(), &ToLine);
  }

  Spindle* Copy() const override { return new Spindle(*this); }
  unsigned int DynTypeId() const override { return TypeId(); }
  // Code that knows only lines finds the speed through the two extension points.
  void* ExtensionObject() override { return &m_speed; }
  bool ExtensionQuery(const void* most) override {
    return m_speed <= *static_cast<const double*>(most);
  }

private:
  static void* ToLine(void* s) { return static_cast<gsl_StLine*>(static_cast<Spindle*>(s)); }

  double m_speed;
};

void Print(const char* label, gsl_StLine& line) {
  const auto* const speed = static_cast<const double*>(line.ExtensionObject());
  const double most = 3000.0;
  std::printf("%s: speed %g, allowed: %s\n", label, speed == nullptr ? 0.0 : *speed,
              line.ExtensionQuery(&most) ? "yes" : "no");
}

void CopyStoreAndRead() {
  gsl_StLine plain;
  Print("a plain line", plain);
  Spindle spindle(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 0.0, 2.0), 1500.0);
  Print("the spindle", spindle);
  Print("its copy", *std::unique_ptr<gsl_StLine>(spindle.Copy()));
  gsl_RecordStore store;
  cls_Save save(store);
  spindle.DBWrite(cls_WriteVisitor(save));
  cls_Load load(store);
  const std::unique_ptr<gsl_StLine> read(cls_ReadVisitor(load, 0).Create<gsl_StLine>());
  Print("what is read", *read);
}

} // namespace

int main() {
  int count = 0;
  gsl_initialize(count);
  auto& classes = omi_Singleton<cls_MetadataRegistrar>::Instance();
  classes.initClassMetadata(&Spindle::InitializeMetadata, 0);
  CopyStoreAndRead();
  gsl_finalize(count);
}
