# What rpart's numbers mean, written out from their definitions and held against every number of a
# grown tree. Check(grown) stops at the first number that the definitions do not give, and returns
# what they tell beyond the tree: how many other splits tie with each one listed.
#
# Nothing here is fast: every split of every predictor is judged anew from the cases of its node.

kTolerance <- 1e-9  # relative: sums are added up in another order than rpart's

Close <- function(a, b, scale = 1) {
  all(is.na(a) == is.na(b)) && all(abs(a - b) <= kTolerance * pmax(scale, abs(b)), na.rm = TRUE)
}

Demand <- function(held, ...) if (!isTRUE(held)) stop(..., call. = FALSE)

# What a class tree weighs its cases by.
ClassWeights <- function(case, y, weights) {
  levels <- case$classes
  total <- vapply(levels, function(level) sum(weights[y == level]), 0)
  prior <- if (is.null(case$prior)) total / sum(total) else case$prior
  loss <- if (is.null(case$loss)) 1 - diag(length(levels)) else case$loss
  altered <- prior * rowSums(loss)
  altered <- altered / sum(altered)
  list(total = total, prior = prior, loss = loss, altered = altered,
       ofNode = sum(total) * prior / total,  # what a case of each class weighs in risk and shares
       ofSplit = sum(total) * altered / total)  # and in judging splits
}

# The impurity of cases, times their weight: sum of squares, or Gini's index.
WeightedImpurity <- function(sums) {
  if (!is.null(sums$classes)) {
    weight <- sum(sums$classes)
    return(if (weight > 0) weight - sum(sums$classes^2) / weight else 0)
  }
  if (sums$weight > 0) sums$squares - sums$total^2 / sums$weight else 0
}

Judge <- function(case, classWeights, y, weights) {
  if (case$method == "anova") {
    centred <- y - sum(weights * y) / sum(weights)
    function(of) list(weight = sum(weights[of]), total = sum((weights * centred)[of]),
                      squares = sum((weights * centred^2)[of]))
  } else {
    scaled <- weights * classWeights$ofSplit[match(y, case$classes)]
    function(of) list(classes = vapply(case$classes, function(c) sum(scaled[of & y == c]), 0))
  }
}

# Every split of `x` with enough cases on either side: its gain and what it sends down to the lower
# (or named) side.
AllSplits <- function(x, sumsOf, meanOf, minbucket, classes) {
  has <- !is.na(x)
  if (!any(has)) return(NULL)
  whole <- WeightedImpurity(sumsOf(has))
  Gain <- function(side) {
    whole - WeightedImpurity(sumsOf(has & side)) - WeightedImpurity(sumsOf(has & !side))
  }
  found <- list()
  Try <- function(side, split) {
    side <- has & side
    other <- has & !side
    if (sum(side) < minbucket || sum(other) < minbucket) return()
    found[[length(found) + 1]] <<- list(gain = Gain(side), split = split,
                                        lower = meanOf(side) < meanOf(other))
  }
  if (is.factor(x)) {
    present <- levels(x)[levels(x) %in% x[has]]
    if (length(present) < 2) return(NULL)
    if (classes <= 2) {
      shares <- vapply(present, function(label) meanOf(has & x == label), 0)
      inOrder <- present[order(shares)]
      for (size in seq_len(length(present) - 1)) {
        set <- inOrder[seq_len(size)]
        Try(x %in% set, set)
      }
    } else {
      for (bits in seq_len(2^(length(present) - 1) - 1)) {
        set <- present[bitwAnd(bits, 2^(seq_along(present) - 1)) > 0]
        Try(x %in% set, set)
      }
    }
  } else {
    values <- sort(unique(x[has]))
    for (i in seq_len(length(values) - 1)) {
      cut <- (values[i] + values[i + 1]) / 2
      Try(has & x < cut, cut)
    }
  }
  found
}

# A row of fit$splits, read.
ReadSplit <- function(fit, row, case, data) {
  split <- fit$splits[row, ]
  name <- rownames(fit$splits)[row]
  result <- list(name = name, count = unname(split["count"]), improve = unname(split["improve"]),
                 adj = unname(split["adj"]), ncat = unname(split["ncat"]))
  if (is.factor(data[[name]])) {
    sides <- fit$csplit[split["index"], seq_len(split["ncat"])]
    labels <- levels(data[[name]])
    result$left <- labels[sides == 1]
    result$right <- labels[sides == 3]
  } else {
    Demand(abs(split["ncat"]) == 1, "ncat of an ordered predictor")
    result$cut <- unname(split["index"])
    result$lowerGoesLeft <- result$ncat == -1
  }
  result
}

# Where a split sends values: 1 left, 2 right, NA nowhere.
Route <- function(split, x) {
  if (is.factor(x)) {
    ifelse(x %in% split$left, 1, ifelse(x %in% split$right, 2, NA))
  } else {
    ifelse((x < split$cut) == split$lowerGoesLeft, 1, 2)
  }
}

SameSplit <- function(split, found) {
  if (is.null(split$cut)) {
    setequal(found$split, split$left) || setequal(found$split, split$right)
  } else {
    split$cut == found$split
  }
}

CheckPrimaries <- function(case, data, members, primaries, sumsOf, meanOf, risk, seen) {
  classes <- length(case$classes)
  scale <- if (case$method == "anova") risk else 1
  best <- lapply(case$predictors, function(predictor) {
    all <- AllSplits(data[[predictor]][members], sumsOf, meanOf, case$control$minbucket, classes)
    gains <- vapply(all, function(each) each$gain, 0) / scale
    if (length(gains) == 0 || max(gains) <= 1e-12) return(NULL)
    list(name = predictor, improve = max(gains),
         winners = all[gains >= max(gains) * (1 - kTolerance)])
  })
  best <- Filter(Negate(is.null), best)
  Demand(length(primaries) == min(length(best), 1 + case$control$maxcompete), case$name,
         ": number of competitors")
  for (i in seq_along(primaries)) {
    listed <- primaries[[i]]
    improves <- vapply(best, function(each) each$improve, 0)
    first <- which(improves >= max(improves) * (1 - kTolerance))  # rounding decides between them
    chosen <- match(listed$name, vapply(best[first], function(each) each$name, ""))
    Demand(!is.na(chosen), case$name, ": order of competitors")
    seen$predictorsThatTie <- seen$predictorsThatTie + (length(first) > 1)
    seen$predictorsNotFirst <- seen$predictorsNotFirst + (chosen > 1)
    if (i == 1) {
      seen$primariesThatTie <- seen$primariesThatTie + (length(first) > 1)
      seen$primariesNotFirst <- seen$primariesNotFirst + (chosen > 1)
    }
    wanted <- best[[first[chosen]]]
    best <- best[-first[chosen]]
    Demand(Close(listed$improve, wanted$improve), case$name, ": improve of ", listed$name)
    Demand(listed$count == sum(!is.na(data[[listed$name]][members])), case$name, ": count")
    winners <- wanted$winners
    same <- vapply(winners, function(each) SameSplit(listed, each), TRUE)
    Demand(any(same), case$name, ": cut or set of ", listed$name)
    winner <- winners[[which(same)[1]]]
    primaries[[i]]$ties <- lapply(winners[-which(same)[1]], function(each) {
      if (is.null(listed$cut)) list(left = each$split, right = setdiff(
        c(listed$left, listed$right), each$split)) else list(cut = each$split)
    })
    tie <- length(winners) > 1
    if (i == 1) {
      seen$primariesThatTie <- seen$primariesThatTie + tie
      seen$primariesNotFirst <- seen$primariesNotFirst + (which(same)[1] > 1)
    }
    if (is.null(listed$cut)) {
      lowerSide <- if (winner$lower) winner$split else
        setdiff(c(listed$left, listed$right), winner$split)
      seen$sets <- seen$sets + 1
      seen$setsThatTie <- seen$setsThatTie + tie
      seen$setsLowerMeanLeft <- seen$setsLowerMeanLeft + setequal(lowerSide, listed$left)
    } else {
      seen$cuts <- seen$cuts + 1
      seen$cutsThatTie <- seen$cutsThatTie + tie
      seen$cutsNotLowest <- seen$cutsNotLowest + (which(same)[1] > 1)
      seen$cutsLowerMeanLeft <- seen$cutsLowerMeanLeft + (winner$lower == listed$lowerGoesLeft)
    }
  }
  primaries
}

# The surrogates of a primary split, best first, at most one per predictor. `peculiar`: by rpart's
# own rules: an ordered predictor has to send two cases either way; its cuts lie between any two
# values in the node, those of cases without a value of the primary split's predictor included; and
# a nominal predictor has to send two cases to the wrong side.
FindSurrogates <- function(case, data, members, weights, primary, peculiar, seen) {
  side <- Route(primary, data[[primary$name]][members])
  known <- !is.na(side)
  w <- weights[members]
  leftWeight <- sum(w[known & side == 1])
  rightWeight <- sum(w[known & side == 2])
  all <- leftWeight + rightWeight
  majority <- max(leftWeight, rightWeight) / all
  OfPredictor <- function(predictor) {
    x <- data[[predictor]][members]
    both <- known & !is.na(x)
    left <- both & side == 1
    right <- both & side == 2
    l <- sum(w[left])
    r <- sum(w[right])
    found <- list(name = predictor, hits = max(l, r), ties = list())
    if (is.factor(x)) {
      goes <- vapply(levels(x), function(label) {
        ofLabel <- both & !is.na(x) & x == label
        if (!any(ofLabel)) return(NA_real_)
        balance <- sum(w[ofLabel & left]) - sum(w[ofLabel & right])
        if (balance == 0) {
          seen$evenCategories <- seen$evenCategories + 1
          balance <- if (l > r) 1 else -1
        }
        if (balance > 0) 1 else 2
      }, 0)
      sent <- goes[as.integer(x)]
      if (peculiar && sum(both & sent != side) < 2) return(NULL)
      found$hits <- sum(w[both & sent == side])
      found$left <- names(goes)[goes %in% 1]
      found$right <- names(goes)[goes %in% 2]
    } else {
      values <- sort(unique(x[if (peculiar) !is.na(x) else both]))
      tried <- list()
      for (i in seq_len(max(length(values) - 1, 0))) {
        cut <- (values[i] + values[i + 1]) / 2
        lower <- both & x < cut
        upper <- both & !lower
        if (peculiar && (sum(lower) < 2 || sum(upper) < 2)) next
        turned <- sum(w[lower & right]) + sum(w[upper & left])
        straight <- sum(w[lower & left]) + sum(w[upper & right])
        tried <- c(tried, list(list(hits = turned, cut = cut, lowerGoesLeft = FALSE),
                               list(hits = straight, cut = cut, lowerGoesLeft = TRUE)))
      }
      for (each in tried) {
        if (each$hits > found$hits * (1 + 1e-12)) {  # the lowest cut
          found[names(each)] <- each
          found$ties <- list()
        } else if (!is.null(found$cut) && each$hits >= found$hits * (1 - 1e-12)) {
          found$ties <- c(found$ties, list(each))
        }
      }
      if (is.null(found$cut)) return(NULL)
    }
    found$agree <- found$hits / all
    found$adj <- (found$agree - majority) / (1 - majority)
    if (found$adj > 1e-10) found
  }
  candidates <- lapply(setdiff(case$predictors, primary$name), OfPredictor)
  candidates <- Filter(Negate(is.null), candidates)
  agrees <- vapply(candidates, function(each) each$agree, 0)
  list(found = candidates[order(-signif(agrees, 11))],  # stable: ties in order of predictors
       default = if (leftWeight > rightWeight) "left" else if (leftWeight < rightWeight) "right"
       else "none")
}

SameSurrogate <- function(a, b) {
  a$name == b$name && if (is.null(a$cut)) {
    setequal(a$left, b$left) && setequal(a$right, b$right)
  } else {
    a$cut == b$cut && a$lowerGoesLeft == b$lowerGoesLeft
  }
}

CheckSurrogates <- function(case, data, members, weights, primary, surrogates, seen) {
  expected <- FindSurrogates(case, data, members, weights, primary, TRUE, seen)
  default <- expected$default
  expected <- head(expected$found, case$control$maxsurrogate)
  Demand(length(expected) == length(surrogates), case$name, ": number of surrogates ",
         length(surrogates), ", not ", length(expected))
  for (i in seq_along(surrogates)) {
    listed <- surrogates[[i]]
    wanted <- expected[[i]]
    Demand(listed$name == wanted$name, case$name, ": order of surrogates")
    Demand(Close(listed$improve, wanted$agree), case$name, ": agree of ", listed$name)
    Demand(Close(listed$adj, wanted$adj), case$name, ": adj of ", listed$name)
    Demand(SameSurrogate(listed, wanted), case$name, ": cut or sets of surrogate ", listed$name)
    surrogates[[i]]$ties <- wanted$ties
    seen$surrogates <- seen$surrogates + 1
    seen$surrogatesThatTie <- seen$surrogatesThatTie + (length(wanted$ties) > 0)
  }
  plain <- head(FindSurrogates(case, data, members, weights, primary, FALSE, Seen())$found,
                case$control$maxsurrogate)
  same <- length(plain) == length(expected) && all(unlist(Map(SameSurrogate, plain, expected)))
  list(surrogates = surrogates, default = default, plain = if (!same) plain)
}

# Where a node sends its cases: by the primary split, the surrogates in order, the default.
RouteNode <- function(data, members, primary, surrogates, default, seen) {
  goes <- Route(primary, data[[primary$name]][members])
  seen$unplaced <- seen$unplaced + sum(is.na(goes))
  sent <- NULL
  for (surrogate in surrogates) {
    x <- data[[surrogate$name]][members]
    to <- Route(surrogate, x)
    open <- is.na(goes) & !is.na(x)
    if (!is.null(surrogate$cut)) {
      seen$equalToCut <- seen$equalToCut + sum(open & x == surrogate$cut)
    } else {
      seen$unseenCategory <- seen$unseenCategory + sum(open & is.na(to))
    }
    sent <- c(sent, sum(open & !is.na(to)))
    goes <- ifelse(is.na(goes), to, goes)
  }
  seen$byDefault <- seen$byDefault + sum(is.na(goes))
  if (default != "none") goes[is.na(goes)] <- if (default == "left") 1 else 2
  seen$nowhere <- seen$nowhere + sum(is.na(goes))
  list(goes = goes, sent = sent)
}

# The sequence of weakest links (Breiman et al. 1984, section 3.3) of a tree with these node risks:
# what a leaf too many has to cost for each subtree to be the best one.
WeakestLinks <- function(nodes, risks, root) {
  kept <- nodes
  table <- NULL
  alpha <- NA
  repeat {
    inner <- kept[(2 * kept) %in% kept]
    leaves <- kept[!(2 * kept) %in% kept]
    Under <- function(top) {
      below <- leaves
      while (any(below > top)) below[below > top] <- below[below > top] %/% 2
      leaves[below == top]
    }
    table <- rbind(table, c(splits = length(inner), risk = sum(risks[match(leaves, nodes)])))
    if (length(inner) == 0) break
    g <- vapply(inner, function(top) {
      under <- Under(top)
      (risks[match(top, nodes)] - sum(risks[match(under, nodes)])) / (length(under) - 1)
    }, 0)
    weakest <- inner[g <= min(g) + 1e-9 * root]
    alpha <- c(alpha, min(g))
    for (top in weakest) {
      node <- kept
      while (any(node > top)) node[node > top] <- node[node > top] %/% 2
      kept <- kept[!(node == top & kept != top)]
    }
  }
  data.frame(alpha = alpha, table)
}

# The complexities that rpart gives its nodes, worked out from the leaves up. A subtree is handed to
# its parent as it stands just above its own complexity, although the parent, being weaker, may
# still have it whole: where that happens, the numbers are not those of the weakest links.
RpartComplexities <- function(nodes, risks, cp, root) {
  complexity <- numeric(length(nodes))
  Visit <- function(node) {
    i <- match(node, nodes)
    if (!(2 * node) %in% nodes) {
      complexity[i] <<- cp * root
      return(c(risk = risks[i], splits = 0))
    }
    sons <- match(c(2 * node, 2 * node + 1), nodes)
    below <- rbind(Visit(2 * node), Visit(2 * node + 1))
    Worth <- function() (risks[i] - sum(below[, 1])) / (sum(below[, 2]) + 1)
    weakerFirst <- if (complexity[sons[2]] > complexity[sons[1]]) 1:2 else 2:1
    for (son in weakerFirst) {
      if (Worth() <= complexity[sons[son]]) break
      below[son, ] <- c(risks[sons[son]], 0)
    }
    complexity[i] <<- Worth()
    c(risk = sum(below[, 1]), splits = sum(below[, 2]) + 1)
  }
  Visit(1)
  for (i in order(nodes)[-1]) {
    complexity[i] <- min(complexity[i], complexity[match(nodes[i] %/% 2, nodes)])
  }
  complexity
}

Seen <- function() {
  seen <- new.env()
  for (what in c("nodes", "splits", "cuts", "cutsLowerMeanLeft", "cutsThatTie", "cutsNotLowest",
                 "sets", "setsLowerMeanLeft", "setsThatTie", "predictorsThatTie", "surrogates",
                 "surrogatesThatTie", "evenCategories", "unplaced", "equalToCut", "unseenCategory",
                 "byDefault", "nowhere", "cutOff", "otherSurrogates", "subtrees", "otherPruning",
                 "predictorsNotFirst",
                 "casesMoved", "primariesThatTie", "primariesNotFirst")) {
    assign(what, 0, envir = seen)
  }
  seen
}

Check <- function(fit, case, data, seen) {
  y <- data[[case$target]]
  weights <- if (is.null(case$weights)) rep(1, nrow(data)) else data[[case$weights]]
  classWeights <- if (case$method == "class") ClassWeights(case, y, weights)
  frame <- fit$frame
  nodes <- as.numeric(row.names(frame))
  terminal <- nodes[fit$where]
  IsUnder <- function(node) {
    above <- terminal
    while (any(above > node)) above[above > node] <- above[above > node] %/% 2
    above == node
  }
  at <- 1
  tree <- list()
  for (i in seq_along(nodes)) {
    seen$nodes <- seen$nodes + 1
    members <- IsUnder(nodes[i])
    Demand(frame$n[i] == sum(members) && Close(frame$wt[i], sum(weights[members])),
           case$name, ": size of node ", nodes[i])
    yIn <- y[members]
    wIn <- weights[members]
    if (case$method == "anova") {
      mean <- sum(wIn * yIn) / sum(wIn)
      risk <- sum(wIn * (yIn - mean)^2)
      Demand(Close(frame$yval[i], mean) && Close(frame$dev[i], risk, frame$dev[1]), case$name,
             ": mean or sum of squares of node ", nodes[i])
      meanOf <- function(of) sum((wIn * yIn)[of]) / sum(wIn[of])
    } else {
      counts <- vapply(case$classes, function(c) sum(wIn[yIn == c]), 0)
      share <- counts * classWeights$ofNode
      expected <- colSums(share * classWeights$loss)  # by predicted class
      k <- length(case$classes)
      yval2 <- frame$yval2[i, ]
      Demand(Close(yval2[1 + seq_len(k)], counts), case$name, ": counts")
      Demand(Close(yval2[1 + k + seq_len(k)], share / sum(share)), case$name, ": shares")
      Demand(Close(yval2[2 + 2 * k], sum(share) / sum(weights)), case$name, ": node probability")
      predicted <- which(expected <= min(expected) + 1e-9 * sum(weights))[1]
      Demand(frame$yval[i] == predicted, case$name, ": class of node ", nodes[i])
      risk <- min(expected)
      Demand(Close(frame$dev[i], risk), case$name, ": risk of node ", nodes[i])
      scaled <- wIn * classWeights$ofSplit[match(yIn, case$classes)]
      meanOf <- function(of) {
        sum((scaled * match(yIn, case$classes))[of]) / sum(scaled[of])
      }
    }
    node <- list(number = nodes[i], row = i)
    if (frame$var[i] != "<leaf>") {
      seen$splits <- seen$splits + 1
      Demand((2 * nodes[i]) %in% nodes, case$name, ": children")
      Demand(nodes[i] < 2^case$control$maxdepth && frame$n[i] >= case$control$minsplit,
             case$name, ": stopping")
      rows <- at + seq_len(1 + frame$ncompete[i] + frame$nsurrogate[i]) - 1
      at <- at + length(rows)
      listed <- lapply(rows, ReadSplit, fit = fit, case = case, data = data)
      primaries <- listed[seq_len(1 + frame$ncompete[i])]
      surrogates <- listed[-seq_len(1 + frame$ncompete[i])]
      primaries <- CheckPrimaries(case, data, members, primaries,
                                  Judge(case, classWeights, yIn, wIn), meanOf, risk, seen)
      second <- CheckSurrogates(case, data, members, weights, primaries[[1]], surrogates, seen)
      way <- RouteNode(data, members, primaries[[1]], second$surrogates, second$default, seen)
      Demand(identical(which(members)[way$goes %in% 1], which(IsUnder(2 * nodes[i]))) &&
               identical(which(members)[way$goes %in% 2], which(IsUnder(2 * nodes[i] + 1))),
             case$name, ": way of the cases of node ", nodes[i])
      Demand(all(vapply(second$surrogates, function(each) each$count, 0) == way$sent), case$name,
             ": numbers of cases that surrogates sent")
      if (!is.null(second$plain)) {
        other <- RouteNode(data, members, primaries[[1]], second$plain, second$default, Seen())
        second$moved <- sum(other$goes != way$goes, na.rm = TRUE)
        seen$otherSurrogates <- seen$otherSurrogates + 1
        seen$casesMoved <- seen$casesMoved + second$moved
      }
      node <- c(node, list(primaries = primaries, surrogates = second$surrogates,
                           default = second$default, plain = second$plain, moved = second$moved))
    } else {
      # a leaf that was a subtree, cut off for costing no more than cp, keeps the subtree's
      Demand(frame$complexity[i] <= case$control$cp + kTolerance, case$name,
             ": complexity of a leaf")
      seen$cutOff <- seen$cutOff + (frame$complexity[i] < case$control$cp - kTolerance)
    }
    tree[[i]] <- node
  }
  list(nodes = tree, weakestLinks = CheckPruning(fit, case, nodes, seen))
}

# The pruning sequence by weakest links, smallest subtree first. rpart's own has its subtrees, and
# where the two part, rpart's numbers are those that RpartComplexities gives.
CheckPruning <- function(fit, case, nodes, seen) {
  frame <- fit$frame
  root <- frame$dev[1]
  complexities <- RpartComplexities(nodes, frame$dev, case$control$cp, root) / root
  inner <- frame$var != "<leaf>"
  Demand(all(abs(complexities - frame$complexity)[inner] <= kTolerance), case$name,
         ": complexity of nodes")
  links <- WeakestLinks(nodes, frame$dev, root)
  links <- links[rev(seq_len(nrow(links))), ]
  links <- data.frame(cp = c(links$alpha[-nrow(links)] / root, case$control$cp),
                      splits = links$splits, risk = links$risk / root)
  cp <- fit$cptable
  Demand(Close(cp[nrow(cp), "CP"], case$control$cp), case$name, ": last CP")
  same <- nrow(links) == nrow(cp) && all(links$splits == cp[, "nsplit"]) &&
    Close(links$risk, cp[, "rel error"]) && Close(links$cp, cp[, "CP"])
  seen$subtrees <- seen$subtrees + nrow(cp)
  seen$otherPruning <- seen$otherPruning + !same
  links
}

# Stopping at cp while growing gives the tree that weakest links leave of the whole one at cp.
CheckStopping <- function(fit, whole, case) {
  nodes <- as.numeric(row.names(whole$frame))
  links <- WeakestLinks(nodes, whole$frame$dev, whole$frame$dev[1])
  left <- links[is.na(links$alpha) | links$alpha / whole$frame$dev[1] <= case$control$cp + 1e-9, ]
  Demand(tail(left$splits, 1) == sum(fit$frame$var != "<leaf>"), case$name, ": size at cp")
  pruned <- prune(whole, cp = case$control$cp)
  Demand(setequal(row.names(pruned$frame), row.names(fit$frame)) &&
           all(row.names(pruned$frame)[pruned$where] == row.names(fit$frame)[fit$where]),
         case$name, ": pruning after growing")
}
