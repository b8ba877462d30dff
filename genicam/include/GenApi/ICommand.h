// Command features.
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

struct GENAPI_DECL ICommand : virtual public IValue {
  virtual void Execute(bool Verify = true) = 0;
  virtual bool IsDone(bool Verify = true) = 0;
  void operator()() { Execute(); }
  ~ICommand() override;
};

}  // namespace GenApi
