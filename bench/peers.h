// Well-known image libraries doing the same to a page in this process: a quarter turn, black and
// white by a threshold or Floyd-Steinberg, a PNG file in memory. Each gets the page in its own form
// beforehand, and one thread.
#pragma once

#include <span>

#include "bench/page.h"
#include "bench/units.h"

struct PeerCall {
  const char* name;
  void* (*load)(const Raster& page);
  // Returns the bytes of the PNG file and adds the stages to times. libvips does all in one pass:
  // its stages stay 0.
  std::size_t (*run)(void* loaded, bool dither, StageTimes& times);
  void (*unload)(void* loaded);
};

std::span<const PeerCall> Peers();

// A page in a peer's form.
class PeerPage {
 public:
  PeerPage(const PeerCall& peer, const Raster& page) : m_peer(peer), m_loaded(peer.load(page)) {}
  ~PeerPage() { m_peer.unload(m_loaded); }
  PeerPage(const PeerPage&) = delete;
  PeerPage& operator=(const PeerPage&) = delete;
  std::size_t Run(bool dither, StageTimes& times) const {
    return m_peer.run(m_loaded, dither, times);
  }

 private:
  const PeerCall& m_peer;
  void* m_loaded;
};
