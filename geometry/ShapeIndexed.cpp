#include "geometry/ShapeIndexed.h"

#include "core/Matrix4D.h"
#include "core/Random.h"
#include "geometry/ShapeNode.h"
#include "geometry/Triangle.h"

#include <algorithm>
#include <iostream>

namespace korvel {

const char* ShapeIndexed::className = "ShapeIndexed";

namespace {

// A linked triangle does not free its normals; the indexed shape holding it
// does, just before deleting it.
void freeLinkedNormals(Triangle* t)
{
    if (t->isOwned()) {
        return;
    }
    for (Vector4D*& n : t->normals) {
        delete n;
        n = nullptr;
    }
}

bool sharesPointer(const Triangle* t)
{
    return t->points[0] == t->points[1] || t->points[1] == t->points[2] || t->points[0] == t->points[2];
}

}  // namespace

ShapeIndexed::ShapeIndexed() = default;

ShapeIndexed::ShapeIndexed(const Shape& source, float ratio)
{
    copyTriangles(source.getTriangles());
    reduceDetail(ratio);
}

ShapeIndexed::ShapeIndexed(const ShapeIndexed& other) : Shape(), nodeRemoval(other.nodeRemoval)
{
    std::vector<Vector4D> points;
    points.reserve(other.index.size());
    for (const auto& entry : other.index) {
        points.push_back(*entry.first);
    }
    expectPoints(std::move(points));
    reserveTriangles(other.getTriangleCount());
    copyTriangles(other.getTriangles());
    endExpectedPoints();
}

ShapeIndexed& ShapeIndexed::operator=(const ShapeIndexed& other)
{
    if (this != &other) {
        nodeRemoval = other.nodeRemoval;
        Shape::operator=(other);
    }
    return *this;
}

ShapeIndexed::~ShapeIndexed()
{
    ShapeIndexed::clear();
}

void ShapeIndexed::dump() const
{
    Shape::dump();
    std::cout << "Nbre of points in ShapeIndexed: " << index.size() << std::endl;
}

void ShapeIndexed::destroyTriangle(Triangle* t)
{
    freeLinkedNormals(t);
    delete t;
}

void ShapeIndexed::forgetRemoved(const Vector4D* p)
{
    if (const auto* found = removedLookup.find(p)) {
        removedPoints.erase(*found);
        removedLookup.erase(p);
    }
}

bool ShapeIndexed::hasTriangle(const Triangle& t) const
{
    // A triangle equal to t holds a shared point equal to each of t's.
    const ShapeNode* node = getPointDataByValue(*t.points[0]);
    return node != nullptr && node->hasTriangle(t);
}

ShapeNode* ShapeIndexed::getPointDataByValue(const Vector4D& p) const
{
    ShapeNode* node = nullptr;
    return octree.get(p, node) ? node : nullptr;
}

ShapeNode* ShapeIndexed::findForAdding(Vector4D* own, bool wasOwned)
{
    ShapeNode* node = foundByValue.find(*own);
    if (node != nullptr) {
        return node;
    }
    bool created = false;
    node = octree.findOrAdd(*own, [&] {
        created = true;
        // An owned point becomes the shared one; a linked one belongs to
        // another shape and is copied.
        return new ShapeNode(wasOwned ? own : new Vector4D(*own));
    });
    if (created) {
        Vector4D* shared = node->point;
        forgetRemoved(shared);
        index.emplace(shared, node);
        pointNodes.insert(shared, node);
        ranksValid = false;
        indexesComputed = false;
    }
    // A later walk for this value takes the same path and stops at the same
    // entry: entries added meanwhile hang below where walks ended.
    foundByValue.remember(*own, node);
    return node;
}

void ShapeIndexed::addTriangle(Triangle* t)
{
    if (t == nullptr) {
        std::cout << "[Warning] attempt to add a null triangle to ShapeIndexed" << std::endl;
        return;
    }
    const bool wasOwned = t->isOwned();
    t->setOwned(false);
    ShapeNode* nodes[3] = {nullptr, nullptr, nullptr};
    for (int i = 0; i < 3; ++i) {
        Vector4D* own = t->points[i];
        ShapeNode* node = findForAdding(own, wasOwned);
        if (wasOwned && own != node->point) {
            delete own;
        }
        t->points[i] = node->point;
        nodes[i] = node;
    }
    // A degenerate triangle (model files have them) is kept like any other;
    // with two corners on one point it is listed once by that point's node.
    for (int i = 0; i < 3; ++i) {
        if ((i < 1 || nodes[i] != nodes[0]) && (i < 2 || nodes[i] != nodes[1])) {
            nodes[i]->addTriangle(t);
        }
    }
    Shape::addTriangle(t);
    if (index.size() >= nextOctreeCheck && !expecting) {
        keepOctreeShallow();
    }
}

void ShapeIndexed::expectPoints(std::vector<Vector4D> points)
{
    // Against a tree already much larger, a few points gain little from a
    // layout of their own and would be walked twice: they come as usual.
    if (points.size() * 4 < octree.size()) {
        return;
    }
    std::vector<Vector4D> scratch;
    Octree<ShapeNode*>::arrangeBalanced(points, scratch, [](const Vector4D& p) { return p; });
    for (const Vector4D& p : points) {
        octree.addRouting(p);
    }
    pointNodes.reserve(index.size() + points.size());
    foundByValue.reserve(index.size() + points.size());
    expecting = true;
}

void ShapeIndexed::endExpectedPoints()
{
    if (!expecting) {
        return;
    }
    expecting = false;
    octree.pruneRouting();
    // The checks resume where they were: a shape fed in many small batches
    // (one per group of a model) still gets them.
    if (index.size() >= nextOctreeCheck) {
        keepOctreeShallow();
    }
}

void ShapeIndexed::keepOctreeShallow()
{
    // Meshes arrive ring by ring, in sorted runs that chain the octree into
    // long lists. Checked each time the point count grows by a quarter (so
    // the checks cost O(n) in all), a tree far deeper than a balanced one is
    // refilled in scrambled order.
    std::size_t logSize = 0;
    for (std::size_t n = index.size(); n > 1; n /= 2) {
        ++logSize;
    }
    if (octree.depth() > 3 * logSize + 8) {
        rebuildOctree();
    }
    nextOctreeCheck = index.size() + index.size() / 4;
}

void ShapeIndexed::unlinkTriangle(Triangle* t)
{
    for (int i = 0; i < 3; ++i) {
        Vector4D* p = t->points[i];
        if ((i > 0 && p == t->points[0]) || (i > 1 && p == t->points[1])) {
            continue;
        }
        ShapeNode* node = nodeOf(p);
        if (node == nullptr) {
            continue;
        }
        node->removeTriangle(t);
        forgetMeasure(node);
        if (node->isEmpty() && nodeRemoval) {
            removeNode(node);
        }
    }
}

bool ShapeIndexed::removeTriangle(Triangle* t)
{
    if (t == nullptr || !isListed(t)) {
        return false;
    }
    // Handed back whole: its corners may be freed with the nodes it leaves
    // empty, so it takes copies of them (and, owned now, keeps its normals).
    const Vector4D corners[3] = {*t->points[0], *t->points[1], *t->points[2]};
    detachTriangle(t);
    if (!t->isOwned()) {
        for (int i = 0; i < 3; ++i) {
            t->points[i] = new Vector4D(corners[i]);
        }
        t->setOwned(true);
    }
    return true;
}

bool ShapeIndexed::detachTriangle(Triangle* t)
{
    if (!isListed(t)) {
        return false;
    }
    unlinkTriangle(t);
    return Shape::removeTriangle(t);
}

bool ShapeIndexed::removeNode(ShapeNode* node)
{
    if (node == nullptr || nodeOf(node->point) != node) {
        std::cout << "[Error] node point being removed not consistent for ShapeIndexed !" << std::endl;
        return false;
    }
    Vector4D* point = node->point;
    if (ranksValid) {
        // The remembered entry spares a walk down the tree.
        index.erase(rankEntries[node->rankSlot]);
        ranks.eraseSlot(node->rankSlot);
    } else {
        index.erase(point);
    }
    pointNodes.erase(point);
    foundByValue.clear();
    if (!octreeDeferred) {
        octree.removeValue(*point, node);
    }
    removedPoints.push_back(point);
    removedLookup.set(point, std::prev(removedPoints.end()));
    indexesComputed = false;

    // Taken out of the node first: removing a triangle below can remove
    // further (emptied) nodes, never this one.
    NodeTriangles around;
    around.takeFrom(node->triangles);
    for (auto it = around.begin(); it != around.end(); ++it) {
        Triangle* t = *it;
        if (std::find(around.begin(), it, t) != it) {
            continue;
        }
        // Degenerate after a collapse, or still on the point about to be
        // freed (a node removed while in use): either way it must go.
        const bool usesPoint = t->points[0] == point || t->points[1] == point || t->points[2] == point;
        if ((usesPoint || sharesPointer(t) || !t->isTriangle()) && detachTriangle(t)) {
            destroyTriangle(t);
        }
    }
    delete point;
    delete node;
    return true;
}

bool ShapeIndexed::removePointRaw(Vector4D* p)
{
    ShapeNode* node = nodeOf(p);
    if (node == nullptr) {
        if (isRemoved(p)) {
            std::cout << "[information]the point has already been removed !" << std::endl;
        } else {
            std::cout << "[Warning] attempt to remove not referenced point for ShapeIndexed !" << std::endl;
        }
        return false;
    }
    float distance = 0.0f;
    Vector4D* q = measure(node, distance);
    if (q == nullptr && !node->isEmpty() && nodeRemoval) {
        // Every triangle around p has all three corners on it: there is no
        // neighbour to move onto, and nothing to see. The point goes with
        // them, which costs the least deviation of all.
        indexesComputed = false;
        return removeNode(node);
    }
    if (q == nullptr) {
        std::cout << "[Error] no nearest border point !" << std::endl;
        return false;
    }
    ShapeNode* target = nodeOf(q);
    if (target == nullptr) {
        std::cout << "[Error] nearest border point not referenced in ShapeIndexed !" << std::endl;
        return false;
    }
    // Every corner around p gets a new edge (to q instead of p): measure
    // again when next sampled.
    if (measuring) {
        // Each corner is shared by two of the triangles; look it up once.
        const Vector4D* seen[32];
        std::size_t seenCount = 0;
        for (const Triangle* t : node->triangles) {
            for (const Vector4D* v : t->points) {
                if (v == p || std::find(seen, seen + seenCount, v) != seen + seenCount) {
                    continue;
                }
                if (seenCount < 32) {
                    seen[seenCount++] = v;
                }
                forgetMeasure(nodeOf(v));
            }
        }
    }
    node->replaceCenter(q, target);
    indexesComputed = false;
    if (nodeRemoval) {
        removeNode(node);
        return true;
    }
    // The point stays, without triangles; the collapsed ones leave.
    NodeTriangles around;
    around.takeFrom(node->triangles);
    for (Triangle* t : around) {
        if (!t->isTriangle() && detachTriangle(t)) {
            destroyTriangle(t);
        }
    }
    return true;
}

bool ShapeIndexed::isRemoved(const Vector4D* p) const
{
    return removedLookup.contains(p);
}

void ShapeIndexed::computeIndexes()
{
    if (indexesComputed) {
        return;
    }
    int32_t next = 0;
    for (auto& [point, node] : index) {
        node->index = next++;
        node->computeNormal();
    }
    indexesComputed = true;
}

bool ShapeIndexed::reduceDetail(float ratio)
{
    if (!(ratio > 0.0f && ratio < 1.0f)) {
        std::cout << "[Warning] detail reduction ratio must lie strictly between 0 and 1 in ShapeIndexed" << std::endl;
        return false;
    }
    const std::size_t count = index.size();
    const auto target = static_cast<std::size_t>(static_cast<unsigned int>(ratio * static_cast<float>(count)));
    if (target == 0 || target >= count) {
        std::cout << "[Warning] detail reduction to " << target << " of " << count
                  << " points is not possible in ShapeIndexed" << std::endl;
        return false;
    }
    if (!nodeRemoval) {
        std::cout << "[Warning] detail reduction needs node removal in ShapeIndexed" << std::endl;
        return false;
    }
    buildRanks();
    measures.assign(ranks.slotCount(), Measure());
    for (std::size_t slot = 0; slot < measures.size(); ++slot) {
        measures[slot].point = ranks.keyAt(slot);
        measures[slot].node = rankNodes[slot];
    }
    measuring = true;
    octreeDeferred = true;
    removedLookup.reserve(removedLookup.size() + (count - target));
    octreeOrder.reserve(count);
    octreeScratch.reserve(count);
    // Measured once in index order (close to memory order) rather than at
    // random when first sampled.
    for (std::size_t slot = 0; slot < rankNodes.size(); ++slot) {
        if (ranks.isPresent(slot)) {
            measureSlot(slot);
        }
    }
    const bool reached = reduceTo(target);
    measuring = false;
    // Cleared but kept: the next reduction reuses the room.
    measures.clear();
    octreeDeferred = false;
    rebuildOctree();
    return reached;
}

bool ShapeIndexed::reduceTo(std::size_t target)
{
    // A consistent shape never fails a collapse; this only stops a
    // damaged one from looping for ever.
    std::size_t failures = 0;
    while (index.size() > target) {
        Vector4D* p = chooseMinDeviationPoint();
        if (p == nullptr) {
            std::cout << "[Warning] minimal deviation point could not be found in ShapeIndexed ! Detail reduction aborted"
                      << std::endl;
            return false;
        }
        if (!removePointRaw(p)) {
            std::cout << "[Warning] minimal deviation point could not be removed in ShapeIndexed !" << std::endl;
            if (++failures > index.size() + 10) {
                std::cout << "[Warning] minimal deviation point could not be found in ShapeIndexed ! Detail reduction aborted"
                          << std::endl;
                return false;
            }
            continue;
        }
        failures = 0;
    }
    return true;
}

Vector4D* ShapeIndexed::chooseMinDeviationPoint()
{
    return choose(false, nullptr);
}

Vector4D* ShapeIndexed::chooseMinDeviationPointByWalk()
{
    return choose(true, nullptr);
}

void ShapeIndexed::sampleMinDeviationCandidates(std::vector<Vector4D*>& visited, bool plainWalk)
{
    visited.clear();
    choose(plainWalk, &visited);
}

Vector4D* ShapeIndexed::choose(bool plainWalk, std::vector<Vector4D*>* visited)
{
    const std::size_t n = index.size();
    if (n < 1) {
        return nullptr;
    }
    if (!plainWalk) {
        buildRanks();
    }
    const std::size_t samples = n >= 10 ? 10 : n;
    const auto range = static_cast<float>(n / 10);
    Vector4D* best = nullptr;
    float bestDistance = 0.0f;
    auto keep = [&](Vector4D* p, float distance) {
        if (visited != nullptr) {
            visited->push_back(p);
        }
        if (best == nullptr || distance < bestDistance) {
            best = p;
            bestDistance = distance;
        }
    };
    auto drawStep = [&] {
        int step = static_cast<int>(Random::aleaFloatZeroRange(range));
        return step == 0 ? static_cast<int>(1 % n) : step;
    };
    if (plainWalk) {
        auto it = index.begin();
        for (std::size_t s = 0; s < samples; ++s) {
            moveIteratorAtDistance(it, drawStep());
            float distance = 0.0f;
            measure(it->second, distance);
            keep(it->first, distance);
        }
        return best;
    }
    // All strides first (the measures draw nothing), so that the records of
    // the ten points can be fetched from memory together rather than one
    // after the other; then the same comparisons in the same order.
    std::size_t slots[10];
    std::size_t rank = 0;
    for (std::size_t s = 0; s < samples; ++s) {
        moveRankAtDistance(rank, drawStep());
        slots[s] = ranks.slotAt(rank);
        if (measuring) {
            __builtin_prefetch(&measures[slots[s]]);
        }
    }
    if (!measuring) {
        for (std::size_t s = 0; s < samples; ++s) {
            keep(ranks.keyAt(slots[s]), measureSlot(slots[s]));
        }
        return best;
    }
    prefetchStale(slots, samples);
    for (std::size_t s = 0; s < samples; ++s) {
        keep(measures[slots[s]].point, measureSlot(slots[s]));
    }
    return best;
}

void ShapeIndexed::prefetchStale(const std::size_t* slots, std::size_t count) const
{
    // A measure to redo reads a node, its triangles and their corners, each
    // a separate block: ask for each level of all the stale samples at once.
    const ShapeNode* stale[10];
    std::size_t n = 0;
    for (std::size_t s = 0; s < count; ++s) {
        if (!measures[slots[s]].valid) {
            stale[n] = measures[slots[s]].node;
            __builtin_prefetch(stale[n]);
            ++n;
        }
    }
    for (std::size_t s = 0; s < n; ++s) {
        __builtin_prefetch(stale[s]->triangles.data());
    }
    for (std::size_t s = 0; s < n; ++s) {
        for (const Triangle* t : stale[s]->triangles) {
            __builtin_prefetch(t);
        }
    }
    for (std::size_t s = 0; s < n; ++s) {
        for (const Triangle* t : stale[s]->triangles) {
            for (const Vector4D* p : t->points) {
                __builtin_prefetch(p);
            }
        }
    }
}

void ShapeIndexed::buildRanks()
{
    if (ranksValid) {
        return;
    }
    std::vector<Vector4D*> keys;
    keys.reserve(index.size());
    rankNodes.clear();
    rankNodes.reserve(index.size());
    rankEntries.clear();
    rankEntries.reserve(index.size());
    for (auto entry = index.begin(); entry != index.end(); ++entry) {
        entry->second->rankSlot = static_cast<uint32_t>(keys.size());
        keys.push_back(entry->first);
        rankNodes.push_back(entry->second);
        rankEntries.push_back(entry);
    }
    ranks.assign(std::move(keys));
    ranksValid = true;
}

Vector4D* ShapeIndexed::measure(ShapeNode* node, float& distance)
{
    if (!measuring || !ranksValid) {
        return node->getMinDistancePointExcluded(node->point, distance);
    }
    distance = measureSlot(node->rankSlot);
    return measures[node->rankSlot].nearest;
}

float ShapeIndexed::measureSlot(std::size_t slot)
{
    if (!measuring) {
        float distance = 0.0f;
        const ShapeNode* node = rankNodes[slot];
        node->getMinDistancePointExcluded(node->point, distance);
        return distance;
    }
    Measure& m = measures[slot];
    if (!m.valid) {
        m.nearest = m.node->getMinDistancePointExcluded(m.point, m.distance);
        m.valid = true;
    }
    return m.distance;
}

void ShapeIndexed::forgetMeasure(const ShapeNode* node)
{
    if (measuring && node != nullptr && ranksValid) {
        measures[node->rankSlot].valid = false;
    }
}

void ShapeIndexed::moveIteratorAtDistance(PointsIndex::iterator& it, int step)
{
    if (step < 0) {
        std::cout << "[Error] step<0 in iterator move for Shape Indexed" << std::endl;
        return;
    }
    if (index.empty()) {
        return;
    }
    const std::size_t moves = static_cast<std::size_t>(step) % index.size();
    for (std::size_t i = 0; i < moves; ++i) {
        ++it;
        if (it == index.end()) {
            it = index.begin();
        }
    }
}

void ShapeIndexed::moveRankAtDistance(std::size_t& rank, int step)
{
    if (step < 0) {
        std::cout << "[Error] step<0 in iterator move for Shape Indexed" << std::endl;
        return;
    }
    const std::size_t n = ranks.size();
    if (n == 0) {
        return;
    }
    rank = (rank + static_cast<std::size_t>(step) % n) % n;
}

ShapeNode* ShapeIndexed::nodeOf(const Vector4D* p) const
{
    ShapeNode* const* found = pointNodes.find(p);
    return found != nullptr ? *found : nullptr;
}

void ShapeIndexed::rebuildOctree()
{
    // Keys are copied beside their nodes: arranging reads each one at every
    // level, and a copy in the array spares a jump to the point each time.
    std::vector<OctreeEntry>& order = octreeOrder;
    order.clear();
    order.reserve(index.size());
    if (ranksValid) {
        // The present rank slots are the index in its order, read from two
        // arrays instead of a walk over the tree's scattered entries.
        for (std::size_t slot = 0; slot < rankNodes.size(); ++slot) {
            if (ranks.isPresent(slot)) {
                order.emplace_back(*rankNodes[slot]->point, rankNodes[slot]);
            }
        }
    } else {
        for (const auto& entry : index) {
            order.emplace_back(*entry.first, entry.second);
        }
    }
    Octree<ShapeNode*>::arrangeBalanced(order, octreeScratch, [](const OctreeEntry& e) { return e.first; });
    octree.clear();
    foundByValue.clear();
    for (const OctreeEntry& entry : order) {
        octree.addDistinct(entry.first, entry.second);
    }
    order.clear();
    octreeScratch.clear();
}

void ShapeIndexed::transform(const Matrix4D& m)
{
    for (auto& [point, node] : index) {
        *point *= m;
    }
    // The octree keys are the old coordinates. Moved along with the points
    // they keep the tree's shape when the move keeps the order of
    // coordinates (resting a model on its lowest point is a translation);
    // otherwise the tree is refilled. A key kept only to route (its point
    // removed) moves as the points did.
    foundByValue.clear();
    const bool kept = octree.moveKeys([&m](const OctreeNode<ShapeNode*>& n) {
        if (n.present) {
            return *n.value->point;
        }
        Vector4D moved = n.point;
        moved *= m;
        return moved;
    });
    if (!kept) {
        rebuildOctree();
    }
    indexesComputed = false;
}

void ShapeIndexed::releaseIndex()
{
    for (auto& [point, node] : index) {
        delete point;
        delete node;
    }
    index.clear();
    pointNodes.clear();
    octree.clear();
    foundByValue.clear();
    ranks.clear();
    rankNodes.clear();
    rankEntries.clear();
    ranksValid = false;
    removedPoints.clear();
    removedLookup.clear();
    indexesComputed = false;
    nextOctreeCheck = 64;
    expecting = false;
}

void ShapeIndexed::clear()
{
    releaseIndex();
    for (Triangle* t : triangles) {
        freeLinkedNormals(t);
    }
    Shape::clear();
}

bool ShapeIndexed::getLimits(Vector4D& min, Vector4D& max) const
{
    if (index.empty()) {
        return false;
    }
    min = *index.begin()->first;
    max = min;
    for (const auto& entry : index) {
        min.minimize(*entry.first);
        max.maximize(*entry.first);
    }
    min.w = 1.0f;
    max.w = 1.0f;
    return true;
}

bool ShapeIndexed::getMinPointY(Vector4D& p) const
{
    if (index.empty()) {
        return false;
    }
    const Vector4D* best = nullptr;
    for (const auto& entry : index) {
        if (best == nullptr || entry.first->y < best->y) {
            best = entry.first;
        }
    }
    p = *best;
    p.w = 1.0f;
    return true;
}

}  // namespace korvel
