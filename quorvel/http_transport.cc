#include "quorvel/http_transport.h"

#include <curl/curl.h>

#include "quorvel/core_logger.h"
#include "quorvel/transport_worker.h"
#include "quorvel/weak_run_loop_source.h"

namespace quorvel {

HttpTransport::HttpTransport(TransportLimits limits) : limits_(limits) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  worker_ = std::make_shared<TransportWorker>(limits_);
  if (!worker_->ready()) CoreLogger::error("the HTTP transport could not set up its event loop");
  thread_ = std::thread([worker = worker_] { worker->run(); });
}

HttpTransport::~HttpTransport() {
  shutdown();
}

void HttpTransport::submit(TransportRequest request, Completion completion) {
  if (!worker_->submit(request, completion)) completion(TransportWorker::cancelledError());
}

void HttpTransport::attach(const std::shared_ptr<platform::RunLoop>& loop) {
  if (!loop || hostSource_) return;
  hostSource_ = std::make_shared<WeakRunLoopSource<TransportWorker>>(worker_);
  hostLoop_ = loop;
  worker_->attachHost();
  loop->addSource(hostSource_);
}

void HttpTransport::shutdown() {
  if (!worker_->stop()) return;
  if (auto loop = hostLoop_.lock()) loop->removeSource(hostSource_);
  if (thread_.joinable()) {
    if (thread_.get_id() == std::this_thread::get_id()) {
      // Shut down from one of its own completions: the loop ends by itself
      // and the thread keeps the worker alive until then.
      thread_.detach();
    } else {
      thread_.join();
    }
  }
  for (auto& pending : worker_->takeWaiting())
    pending.completion(TransportWorker::cancelledError());
}

}  // namespace quorvel
