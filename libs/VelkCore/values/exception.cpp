#include "host/exception.h"

#include "values/counted_object.h"

namespace {

class ExceptionObject final : public velk::core::CountedObject<mzIException> {
  public:
    ExceptionObject(mzComStringC source, mzComStringC description, mzComPtrT<mzIException> inner)
        : source_(std::move(source)),
          description_(std::move(description)),
          inner_(std::move(inner)) {}

    mzComStringC source() const override { return source_; }
    mzComStringC description() const override { return description_; }
    mzComPtrT<mzIException> inner() const override { return inner_; }

  private:
    mzComStringC const source_;
    mzComStringC const description_;
    mzComPtrT<mzIException> const inner_;
};

}  // namespace

mzComPtrT<mzIException> mzComCreateException(mzComStringC const& source,
                                             mzComStringC const& description,
                                             mzComPtrT<mzIException> const& inner) {
    return mzComPtrT<mzIException>(new ExceptionObject(source, description, inner));
}

// A published signature. NOLINTNEXTLINE(performance-unnecessary-value-param)
mzComStringC mzComExceptionErrorString(mzComPtrT<mzIException> exception, mzComStringC fallback) {
    // Exception objects of others may be chained in a ring.
    constexpr int longestChain = 64;
    QString text;
    for (int depth = 0; exception.isValid() && depth < longestChain; ++depth) {
        mzComStringC const description = exception->description();
        if (!description.isEmpty()) {
            if (!text.isEmpty()) text += fallback.toQString();
            text += description.toQString();
        }
        exception = exception->inner();
    }
    return text.isEmpty() ? fallback : mzComStringC(text);
}
