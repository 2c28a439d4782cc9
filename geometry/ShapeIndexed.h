#pragma once
// A shape whose triangles share their points: every distinct point is stored
// once (it belongs to the index) and each triangle links to it. Each point
// has a ShapeNode listing the triangles around it. The sharing gives indexed
// vertex data with per-point normals, and lets the shape lower its level of
// detail by collapsing points onto their nearest neighbours.
//
// Triangles added here become linked (owned == false); their points are
// replaced by the shared ones. Their normals stay with them and are freed by
// this shape when it deletes them. Degenerate triangles (two corners on one
// point, or three in a line) are kept: model files have them. A node lists
// such a triangle once; a collapse removes those around the point it frees.
//
// The points index is ordered by pointer value; detail reduction samples it
// by random strides. A rank structure kept in step with the index makes each
// stride O(log n) while visiting exactly what an iterator walk visits. During
// a reduction each point's shortest edge is remembered and measured again
// only after a collapse changed its neighbourhood, and the octree is left
// alone until the end, when it is refilled at once.

#include "geometry/Octree.h"
#include "geometry/ExactPointCache.h"
#include "geometry/RankedSet.h"
#include "geometry/Shape.h"

#include <cstdint>
#include <list>
#include <map>
#include <utility>
#include <vector>

namespace korvel {

class ShapeNode;

class ShapeIndexed : public Shape {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    using PointsIndex = std::map<Vector4D*, ShapeNode*>;

    ShapeIndexed();
    // Indexes owned copies of the source's triangles, then reduceDetail(ratio).
    ShapeIndexed(const Shape& source, float ratio);
    ShapeIndexed(const ShapeIndexed& other);
    ShapeIndexed& operator=(const ShapeIndexed& other);
    ~ShapeIndexed() override;

    void dump() const override;
    const char* getInstanceClassName() const override { return className; }
    bool load(std::istream& in) override { return Shape::load(in); }
    bool save(std::ostream& out) override { return Shape::save(out); }

    bool hasTriangle(const Triangle& t) const override;
    void addTriangle(Triangle* t) override;
    // The triangle goes back to the caller owned, with copies of its corners.
    bool removeTriangle(Triangle* t) override;
    void transform(const Matrix4D& m) override;
    void clear() override;
    bool getLimits(Vector4D& min, Vector4D& max) const override;
    bool getMinPointY(Vector4D& p) const override;

    // Points that triangles are about to bring (a model's points, a copied
    // shape's): the octree is laid out for them at once, balanced, with keys
    // that only route until a triangle brings an equal point. Adding those
    // triangles then keeps lookups short in whatever order they come, with
    // no refill on the way. Which points are shared is decided as ever, by
    // addTriangle. endExpectedPoints drops the keys no triangle claimed. A
    // few points against a much larger octree are left to come as usual.
    void expectPoints(std::vector<Vector4D> points);
    void endExpectedPoints();

    ShapeNode* getPointDataByValue(const Vector4D& p) const;
    // The node of a shared point, by pointer (null for a point not shared
    // here), in constant time.
    ShapeNode* getNode(const Vector4D* p) const { return nodeOf(p); }
    bool removeNode(ShapeNode* node);
    // Collapses p onto its nearest neighbour.
    bool removePointRaw(Vector4D* p);
    bool isRemoved(const Vector4D* p) const;
    // Numbers the points in index order and computes their normals; redone
    // only after the points changed.
    void computeIndexes();

    // Removes points until ratio x (point count) are left; ratio in (0, 1).
    bool reduceDetail(float ratio);
    // Of ten points sampled by random strides, the one with the shortest edge.
    Vector4D* chooseMinDeviationPoint();
    // The same draws and choice, walking the index with an iterator: the
    // reference the rank walk must agree with (O(n) per stride).
    Vector4D* chooseMinDeviationPointByWalk();
    // The points the next choice would measure, in order, drawn as the
    // choice draws them; plainWalk picks the iterator walk.
    void sampleMinDeviationCandidates(std::vector<Vector4D*>& visited, bool plainWalk);
    // Forward step entries, wrapping from the end to the first entry.
    void moveIteratorAtDistance(PointsIndex::iterator& it, int step);

    std::size_t getPointCount() const { return index.size(); }
    const PointsIndex& getPointsIndex() const { return index; }
    const Octree<ShapeNode*>& getOctree() const { return octree; }
    const std::list<Vector4D*>& getRemovedPoints() const { return removedPoints; }
    bool areIndexesComputed() const { return indexesComputed; }
    // On by default. Off, emptied points keep their node and index entry
    // (indexes stay stable while triangles are edited) and reduceDetail
    // refuses to run, as it could never lower the point count.
    void setNodeRemoval(bool value) { nodeRemoval = value; }
    bool isNodeRemoval() const { return nodeRemoval; }

private:
    Vector4D* choose(bool plainWalk, std::vector<Vector4D*>* visited);
    // The node's shortest edge; remembered while reducing.
    Vector4D* measure(ShapeNode* node, float& distance);
    // The same by rank slot, reading only the remembered value when valid.
    float measureSlot(std::size_t slot);
    void forgetMeasure(const ShapeNode* node);
    void prefetchStale(const std::size_t* slots, std::size_t count) const;
    bool reduceTo(std::size_t target);
    void buildRanks();
    void moveRankAtDistance(std::size_t& rank, int step);
    // Unlinks t from the nodes of its points and drops emptied nodes.
    void unlinkTriangle(Triangle* t);
    // removeTriangle without handing back: for triangles deleted right after.
    bool detachTriangle(Triangle* t);
    // Deletes a triangle this shape no longer lists, with its normals.
    static void destroyTriangle(Triangle* t);
    void forgetRemoved(const Vector4D* p);
    void releaseIndex();

    // The node of a shared point, by pointer.
    ShapeNode* nodeOf(const Vector4D* p) const;
    // Refills the octree from the index in a balanced order, so that its
    // depth stays near log n whatever order the points came in.
    void rebuildOctree();
    // The node of the shared point equal to *own, made (and remembered for
    // the points of the next triangles) when there is none: own itself
    // becomes the shared point when the triangle owned it.
    ShapeNode* findForAdding(Vector4D* own, bool wasOwned);
    void keepOctreeShallow();
    std::size_t nextOctreeCheck = 64;
    // While expected points are being added, the tree needs no checks.
    bool expecting = false;
    // Room for rebuildOctree, taken before a reduction frees its many small
    // blocks: a large allocation right after them makes glibc merge them
    // all at once.
    using OctreeEntry = std::pair<Vector4D, ShapeNode*>;
    std::vector<OctreeEntry> octreeOrder;
    std::vector<OctreeEntry> octreeScratch;

    PointsIndex index;
    // The same entries as index, hashed: lookups by pointer in O(1).
    PointerMap<Vector4D, ShapeNode*> pointNodes;
    Octree<ShapeNode*> octree;
    // The octree's answers to addTriangle, while points are only added.
    ExactPointCache foundByValue;
    // While reducing, removed points leave the octree all at once at the
    // end (a rebuild), instead of one walk each.
    bool octreeDeferred = false;
    std::list<Vector4D*> removedPoints;
    // Where each removed point sits in removedPoints, for O(1) tests.
    PointerMap<Vector4D, std::list<Vector4D*>::iterator> removedLookup;
    bool indexesComputed = false;
    bool nodeRemoval = true;
    // Ranks of the index keys; rebuilt lazily after points were added.
    RankedSet<Vector4D*> ranks;
    // The node of each rank slot, beside the keys.
    std::vector<ShapeNode*> rankNodes;
    // The index entry of each rank slot, valid while its key is present.
    std::vector<PointsIndex::iterator> rankEntries;
    bool ranksValid = false;
    // Measures are remembered only within one reduction, where every change
    // to the triangles goes through this shape and forgets what it touches.
    // One per rank slot, side by side, with the slot's key and node, so
    // that a sample reads one small record instead of three arrays.
    struct Measure {
        float distance = -1.0f;
        bool valid = false;
        Vector4D* nearest = nullptr;
        Vector4D* point = nullptr;
        ShapeNode* node = nullptr;
    };
    std::vector<Measure> measures;
    bool measuring = false;
};

}  // namespace korvel
