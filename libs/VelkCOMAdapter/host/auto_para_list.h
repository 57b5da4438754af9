#pragma once

#include <QVarLengthArray>

#include "host/auto_type_cast.h"
#include "host/variant_array.h"

/// The arguments of a member call as its invoker sees them. It refers to the
/// array, which must outlive it unchanged.
class proxyAutoParaListC {
  public:
    explicit proxyAutoParaListC(mzComVariantArrayC const& args) {
        for (int i = 0; i < args.size(); ++i) {
            casts_.append(proxyAutoTypeCastC::argument(args.at(i)));
        }
    }

    int size() const { return casts_.size(); }
    /// Argument `index`; one that is not there cannot be read as anything.
    proxyAutoTypeCastC& operator[](int index) {
        return index >= 0 && index < casts_.size() ? casts_[index] : absent_;
    }

  private:
    QVarLengthArray<proxyAutoTypeCastC, 6> casts_;
    proxyAutoTypeCastC absent_;
};
