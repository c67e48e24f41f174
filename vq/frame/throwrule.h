// OwnThrowRule: a stretch of the library's own code under a throw rule that other threads do not see.
#ifndef QUILLON_VQ_FRAME_THROWRULE_H
#define QUILLON_VQ_FRAME_THROWRULE_H

namespace vq {

// On this thread the switch reads as `on` while the object lives, and setting it lasts as long. The client's setting,
// for the whole process, stays as it is: another thread may be at work by it.
class OwnThrowRule {
 public:
  explicit OwnThrowRule(bool on);
  ~OwnThrowRule();
  OwnThrowRule(const OwnThrowRule&) = delete;
  OwnThrowRule& operator=(const OwnThrowRule&) = delete;

 private:
  int Saved;
};

}  // namespace vq

#endif
