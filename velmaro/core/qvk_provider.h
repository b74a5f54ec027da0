#pragma once

#include <memory>

#include "quorvel/quorvel.h"

namespace velmaro {

// Base of every provider: holds the core object through which requests go.
class QVKProvider {
 public:
  // With the core library's current instance (none if it was not initialized).
  QVKProvider() : quorvel(quorvel::QVKClassicQuorvel::instance()) {}
  explicit QVKProvider(std::shared_ptr<quorvel::Quorvel> core) : quorvel(std::move(core)) {}
  static QVKProvider initWithQuorvel(std::shared_ptr<quorvel::Quorvel> core) {
    return QVKProvider(std::move(core));
  }
  virtual ~QVKProvider() = default;
  QVKProvider(const QVKProvider&) = default;
  QVKProvider& operator=(const QVKProvider&) = default;

  std::shared_ptr<quorvel::Quorvel> quorvel;
};

}  // namespace velmaro
