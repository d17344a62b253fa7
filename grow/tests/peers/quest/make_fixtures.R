# Makes the fixture of this directory, as README.md describes it: Rscript make_fixtures.R
#
# Everything here comes from R's own functions and data, and from MASS.

suppressPackageStartupMessages(library(MASS))

kAlpha <- 0.05

Number <- function(x) ifelse(is.na(x), "missing", sprintf("%.17g", x))

lines <- character(0)
Write <- function(...) lines <<- c(lines, paste(c(...), collapse = "\t"))

# --- tests ----------------------------------------------------------------------------------------

# Of equal means. `w`: case weights; `n`: how often each case is repeated.
TestMeans <- function(x, class, w, n) {
  at <- rep(seq_along(x), n)
  d <- data.frame(x = x[at], class = factor(class[at]), w = w[at])
  table <- anova(lm(x ~ class, d, weights = w))
  if (all(w == 1)) {
    test <- oneway.test(x ~ class, d, var.equal = TRUE)
    stopifnot(isTRUE(all.equal(unname(test$statistic), table$`F value`[1])))
  }
  f <- table$`F value`[1]
  list(statistic = f, log.p = pf(f, table$Df[1], table$Df[2], lower.tail = FALSE, log.p = TRUE))
}

# Levene's: the same of the distances from the means of the classes.
TestSpread <- function(x, class, w, n) {
  means <- sapply(split(seq_along(x), class), function(of) weighted.mean(x[of], (w * n)[of]))
  TestMeans(abs(x - means[as.character(class)]), class, w, n)
}

# Of independence. With case weights, of the model that multiplies row, column and the reciprocal
# of the mean weight in a cell.
TestCategories <- function(x, class, w, n) {
  table <- unclass(xtabs(n ~ x + class))
  if (all(w == 1)) {
    test <- suppressWarnings(chisq.test(table, correct = FALSE))
    statistic <- unname(test$statistic)
  } else {
    mean.weights <- unclass(xtabs(w * n ~ x + class)) / table
    stopifnot(table > 0)
    cells <- data.frame(n = as.vector(table), row = factor(row(table)), column = factor(col(table)))
    fit <- glm(n ~ row + column, poisson, cells, offset = -log(as.vector(mean.weights)),
               control = glm.control(epsilon = 1e-13, maxit = 100))
    statistic <- sum(residuals(fit, "pearson")^2)
  }
  df <- (nrow(table) - 1) * (ncol(table) - 1)
  list(statistic = statistic, log.p = pchisq(statistic, df, lower.tail = FALSE, log.p = TRUE))
}

# --- splits ---------------------------------------------------------------------------------------

# Weighted moments of each class, with the divisor of an unbiased estimate (`moment`), or without
# (`mle`).
Moments <- function(x, class, weight, n, method) {
  t(sapply(split(seq_along(x), class), function(of) {
    mean <- weighted.mean(x[of], weight[of])
    size <- sum(n[of])
    unbiased <- if (method == "mle") 1 else if (size > 1) size / (size - 1) else 0
    c(p = sum(weight[of]), mean = mean,
      variance = weighted.mean((x[of] - mean)^2, weight[of]) * unbiased)
  }))
}

# The number nearest to the lower mean at which two superclasses are equally probable, and the one
# halfway between the means.
SplitPoints <- function(moments) {
  means <- moments[, "mean"]
  high <- if (length(means) == 2) {
    means == max(means)
  } else {
    kmeans(means, range(means), algorithm = "Lloyd")$cluster == 2
  }
  Super <- function(of) {
    p <- moments[of, "p"]
    mean <- weighted.mean(means[of], p)
    list(p = sum(p), mean = mean,
         variance = weighted.mean(moments[of, "variance"] + (means[of] - mean)^2, p))
  }
  low <- Super(!high)
  up <- Super(high)
  Square <- function(of) {
    c(log(of$p) - 0.5 * log(of$variance) - of$mean^2 / 2 / of$variance, of$mean / of$variance,
      -0.5 / of$variance)
  }
  roots <- polyroot(Square(low) - Square(up))
  middle <- (low$mean + up$mean) / 2
  if (all(abs(Im(roots)) > 1e-6 * abs(Re(roots)))) return(middle)
  c(Re(roots)[which.min(abs(roots - low$mean))], middle)
}

# That MASS finds both of two classes equally probable there.
CheckCut <- function(cut, x, class, n, prior) {
  at <- rep(seq_along(x), n)
  fit <- qda(matrix(x[at]), factor(class[at]), prior = prior, method = "moment")
  posterior <- predict(fit, matrix(cut), method = "plug-in")$posterior
  stopifnot(abs(posterior - 0.5) < 1e-9)
}

# The decrease of Gini impurity; 0 where a side is empty. `left`: of the cases with a value.
Improvement <- function(left, class, weight) {
  Gain <- function(of) sum(tapply(weight[of], class[of], sum, default = 0)^2) / sum(weight[of])
  if (all(left) || !any(left)) 0 else Gain(left) + Gain(!left) - Gain(rep(TRUE, length(left)))
}

FindCut <- function(x, class, weight, n, method = "moment") {
  points <- SplitPoints(Moments(x, class, weight, n, method))
  for (cut in points) {
    improvement <- Improvement(x <= cut, class, weight)
    if (improvement > 1e-12) {
      return(list(cut = cut, improvement = improvement, is.middle = cut == tail(points, 1)))
    }
  }
  NULL
}

# Categories have the scores of correspondence analysis, the farthest one positive.
DivideCategories <- function(x, class, weight, n, method = "moment") {
  scores <- suppressWarnings(corresp(unclass(xtabs(weight ~ x + class)), nf = 1))$rscore
  scores <- scores * sign(scores[which.max(abs(scores))])
  of.cases <- unname(scores[as.character(x)])
  found <- FindCut(of.cases, class, weight, n, method)
  if (!is.null(found)) found$low <- as.numeric(names(scores)[scores <= found$cut])
  found
}

# --- rules of a root ------------------------------------------------------------------------------

# `predictors`: numbers, or factors. `w`: case weights; `n`: frequencies; `prior`: of the classes.
WriteRules <- function(name, class, predictors, w = NULL, n = NULL, prior = NULL) {
  class <- as.integer(factor(class)) - 1
  predictors <- lapply(as.list(predictors), function(x) {
    if (is.factor(x)) factor(as.integer(x) - 1) else as.numeric(x)
  })
  Write("data", name)
  Write("classes", class)
  if (!is.null(n)) Write("frequencies", Number(n))
  if (!is.null(w)) Write("weights", Number(w))
  if (!is.null(prior)) Write("priors", Number(prior))
  for (x in predictors) {
    if (is.factor(x)) Write("nominal", as.character(x)) else Write("ordered", Number(x))
  }

  if (is.null(n)) n <- rep(1, length(class))
  if (is.null(w)) w <- rep(1, length(class))
  shares <- tapply(w * n, class, sum) / sum(w * n)
  if (is.null(prior)) prior <- as.vector(shares)
  weight <- w * n / sum(w * n) * (prior / shares)[as.character(class)]

  ordered <- !sapply(predictors, is.factor)
  tests <- lapply(seq_along(predictors), function(i) {
    has <- !is.na(predictors[[i]])
    Test <- if (ordered[i]) TestMeans else TestCategories
    Test(predictors[[i]][has], class[has], w[has], n[has])
  })
  log.p <- sapply(tests, `[[`, "log.p")
  used <- length(tests)
  order <- order(log.p)
  by.spread <- NULL
  if (min(log.p) >= log(kAlpha / used) && any(ordered)) {
    spread <- lapply(which(ordered), function(i) {
      has <- !is.na(predictors[[i]])
      TestSpread(predictors[[i]][has], class[has], w[has], n[has])
    })
    least <- which.min(sapply(spread, `[[`, "log.p"))
    if (spread[[least]]$log.p < log(kAlpha / (used + sum(ordered)))) {
      by.spread <- spread[[least]]
      chosen <- which(ordered)[least]
      order <- c(chosen, setdiff(order, chosen))
    }
  }
  for (i in order) {
    x <- predictors[[i]]
    has <- !is.na(x)
    Find <- if (ordered[i]) FindCut else DivideCategories
    found <- Find(x[has], class[has], weight[has], n[has])
    if (is.null(found)) next
    first <- i == order[1] && !is.null(by.spread)
    test <- if (first) by.spread else tests[[i]]
    adjusted <- min(0, test$log.p + log(if (first) used + sum(ordered) else used))
    Write("rule", i - 1, if (!ordered[i]) "chi-square" else if (first) "levene" else "f",
          Number(c(test$statistic, adjusted, found$improvement)))
    if (ordered[i]) {
      Write("cut", Number(found$cut))
      if (length(prior) == 2 && all(w == 1) && !found$is.middle) {
        CheckCut(found$cut, x[has], class[has], n[has], prior)
      }
    } else {
      Write("low", found$low)
    }
  }
}

# --- data -----------------------------------------------------------------------------------------

MakeNumbers <- function() {
  two <- iris[iris$Species != "setosa", ]
  row <- seq_len(nrow(two))
  WriteRules("two species", two$Species, two[1:4])
  WriteRules("two species with priors", two$Species, two[1:4], prior = c(0.3, 0.7))
  WriteRules("repeated flowers", two$Species, two[1:4], n = 1 + row %% 3)
  WriteRules("weighted flowers", two$Species, two[1:4], w = ifelse(row %% 3 == 0, 2.5, 0.5))
  WriteRules("weighted and repeated flowers", two$Species, two[1:4],
             w = ifelse(two$Sepal.Length > 6, 1.75, 0.5), n = 1 + row %% 3)
  WriteRules("three species", iris$Species, iris[1:4])
  WriteRules("months", airquality$Month, airquality[1:4])  # some values are missing
  WriteRules("cylinders", mtcars$cyl == 8, mtcars[c("mpg", "disp", "qsec")])
  WriteRules("few of a class", mtcars$carb == 3, mtcars[c("mpg", "wt", "qsec")])
}

MakeSpreads <- function() {
  set.seed(5)
  class <- rep(0:1, c(60, 40))
  spread <- round(rnorm(100, 0.1 * class, 1 + 2 * class), 2)
  noise <- round(rnorm(100), 2)
  kind <- factor(1 + seq_along(class) %% 3 %/% 2)
  predictors <- list(noise, kind, spread)
  WriteRules("spread", class, predictors)
  WriteRules("weighted spread", class, predictors, w = 0.5 + (seq_along(class) %% 3) / 2)
}

MakeCategories <- function() {
  WriteTable <- function(name, table, class, ...) {
    cells <- as.data.frame(as.table(table))
    cells <- cells[cells$Freq > 0, ]
    factors <- setdiff(names(cells), c(class, "Freq"))
    WriteRules(name, cells[[class]], cells[factors], n = cells$Freq, ...)
  }
  WriteTable("eyes by hair", apply(HairEyeColor, c(1, 2), sum), "Eye")
  WriteTable("admissions", UCBAdmissions, "Admit")
  WriteTable("passengers", Titanic, "Survived")
  WriteTable("passengers with priors", Titanic, "Survived", prior = c(0.4, 0.6))
  cell <- seq_len(24)
  WriteTable("weighted admissions", UCBAdmissions, "Admit", w = 0.5 + 1.25 * cell)

  # Tables that are divided elsewhere if variances are divided by the number of cases.
  set.seed(3)
  found <- 0
  while (found < 3) {
    cells <- as.data.frame(as.table(matrix(rpois(12, c(1, 3)), 6, byrow = TRUE)))
    names(cells) <- c("x", "class", "n")
    cases <- droplevels(cells[rep(seq_len(12), cells$n), ])
    shares <- table(cases$x, cases$class) / as.vector(table(cases$x))
    # A class whose shares are the same wherever it occurs does not vary.
    vary <- apply(shares, 2, function(of) length(unique(of[of > 0])) > 1)
    if (nlevels(cases$x) < 6 || !all(vary)) next
    ones <- rep(1, nrow(cases))
    Low <- function(method) {
      DivideCategories(cases$x, cases$class, ones / sum(ones), ones, method)$low
    }
    cases$x <- factor(as.integer(cases$x) - 1)
    if (identical(Low("moment"), Low("mle"))) next
    found <- found + 1
    WriteRules(paste("few cases", found), cases$class, list(cases$x))
  }
}

MakeNumbers()
MakeSpreads()
MakeCategories()
file <- file("rules.txt", "wb")
writeLines(lines, file)
close(file)
