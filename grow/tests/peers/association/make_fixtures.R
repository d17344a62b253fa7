# Makes the fixtures of this directory, as README.md describes them: Rscript make_fixtures.R
#
# Everything here comes from R's own functions and data.

Number <- function(x) ifelse(is.infinite(x), ifelse(x > 0, "inf", "-inf"), sprintf("%.17g", x))

lines <- character(0)
Write <- function(...) lines <<- c(lines, paste(c(...), collapse = "\t"))
Save <- function(name) {
  file <- file(name, "wb")
  on.exit(close(file))
  writeLines(lines, file)
  lines <<- character(0)
}

# --- tails ----------------------------------------------------------------------------------------

MakeTails <- function() {
  multiples <- c(0.01, 0.5, 0.99, 1, 1.2, 2, 5, 30, 300, 1e4, 1e7)
  for (df in c(0.5, 1, 2, 3, 9, 45, 500, 20000)) {
    around <- 1000 + seq(120, 220, by = 20)  # where probabilities leave the range of doubles
    for (value in c(df * multiples, around)) {
      log.p <- pchisq(value, df, lower.tail = FALSE, log.p = TRUE)
      Write("chi-square", Number(c(value, df, 0, log.p)))
    }
  }
  for (df in c(1, 2, 9, 40)) {
    for (errors in c(1, 2, 7, 50, 1000)) {
      for (value in c(multiples, 1e20)) {
        log.p <- pf(value, df, errors, lower.tail = FALSE, log.p = TRUE)
        Write("f", Number(c(value, df, errors, log.p)))
      }
    }
  }
  Save("tails.txt")
}

# --- tables of classes ----------------------------------------------------------------------------

Statistic <- function(kind, value, df) {
  Write(kind, Number(c(value, df, pchisq(value, df, lower.tail = FALSE, log.p = TRUE))))
}

# `weights`: mean weight of each cell.
WriteTable <- function(name, table, weights = NULL) {
  table <- unname(as.matrix(table))
  storage.mode(table) <- "double"
  scores <- seq_len(ncol(table))^1.5
  Write("table", name, ncol(table))
  for (row in seq_len(nrow(table))) Write("sizes", Number(table[row, ]))
  if (!is.null(weights)) {
    for (row in seq_len(nrow(table))) Write("weights", Number(weights[row, ] * table[row, ]))
  }
  Write("scores", Number(scores))

  mean.weights <- if (is.null(weights)) 0 * table + 1 else weights
  mean.weights[table == 0] <- sum(mean.weights * table) / sum(table)
  cells <- data.frame(n = as.vector(table), row = factor(row(table)), column = factor(col(table)),
                      score = scores[col(table)], mean.weights = as.vector(mean.weights))
  control <- glm.control(epsilon = 1e-13, maxit = 100)
  Fit <- function(formula) {
    suppressWarnings(glm(formula, poisson, cells, offset = -log(mean.weights), control = control))
  }
  independent <- Fit(n ~ row + column)
  # The columns take the effect of the first row; with it, the design would not be of full rank.
  effects <- model.matrix(~ row:score, cells)[, -(1:2), drop = FALSE]
  row.effects <- Fit(n ~ row + column + effects)
  expected <- fitted(independent)
  pearson <- sum((cells$n - expected)^2 / expected)
  free <- (nrow(table) - 1) * (ncol(table) - 1)
  if (is.null(weights)) {
    test <- suppressWarnings(chisq.test(table, correct = FALSE))
    stopifnot(isTRUE(all.equal(unname(test$statistic), pearson, tolerance = 1e-9)),
              test$parameter == free)
    pearson <- unname(test$statistic)
  }
  Statistic("pearson", pearson, free)
  Statistic("likelihood-ratio", independent$deviance, free)
  stopifnot(independent$df.residual - row.effects$df.residual == nrow(table) - 1)
  Statistic("row-effects", independent$deviance - row.effects$deviance, nrow(table) - 1)
}

MakeTables <- function() {
  WriteTable("admission by department", t(apply(UCBAdmissions, c(1, 3), sum)))
  WriteTable("hair by eye colour", apply(HairEyeColor, c(1, 2), sum))
  WriteTable("survival by class", apply(Titanic, c(1, 4), sum))
  WriteTable("job satisfaction by income",  # Agresti 1990, table 2.8
             rbind(c(20, 24, 80, 82), c(22, 38, 104, 125), c(13, 28, 81, 113), c(7, 18, 54, 92)))
  WriteTable("far from independent", rbind(c(90000, 10), c(30, 80000)))
  set.seed(7)
  for (number in 1:12) {
    rows <- 2 + number %% 4
    columns <- 2 + number %% 3
    shares <- outer(runif(rows), runif(columns)) * exp(rnorm(rows * columns, sd = 0.5))
    table <- 1 + matrix(rpois(rows * columns, 40 * shares), rows)
    if (number %% 3 == 0) table[1, 2] <- 0
    weights <- round(matrix(runif(rows * columns, 0.25, 3), rows) * 64) / 64
    WriteTable(paste("random", number), table)
    WriteTable(paste("random", number, "weighted"), table, weights)
  }
  Save("class_tables.txt")
}

# --- groups of numbers ----------------------------------------------------------------------------

WriteGroups <- function(name, number, group, weight = NULL) {
  Write("numbers", name)
  group <- factor(group)
  for (level in levels(group)) {
    Write("group", Number(number[group == level]))
    if (!is.null(weight)) Write("weights", Number(weight[group == level]))
  }
  test <- anova(if (is.null(weight)) lm(number ~ group) else lm(number ~ group, weights = weight))
  if (is.null(weight)) {
    same <- oneway.test(number ~ group, var.equal = TRUE)
    stopifnot(isTRUE(all.equal(unname(same$statistic), test[1, "F value"])))
  }
  Write("f", Number(c(test[1, "F value"], test$Df,
                      pf(test[1, "F value"], test$Df[1], test$Df[2], lower.tail = FALSE,
                         log.p = TRUE))))
  # Levene 1960: the same test of the distances from the means of the groups.
  if (is.null(weight)) {
    distance <- abs(number - ave(number, group))
    test <- anova(lm(distance ~ group))
    Write("levene", Number(c(test[1, "F value"], test$Df,
                             pf(test[1, "F value"], test$Df[1], test$Df[2], lower.tail = FALSE,
                                log.p = TRUE))))
  }
}

MakeNumbers <- function() {
  WriteGroups("insect sprays", InsectSprays$count, InsectSprays$spray)
  WriteGroups("chicken feed", chickwts$weight, chickwts$feed)
  WriteGroups("plant growth", PlantGrowth$weight, PlantGrowth$group)
  WriteGroups("petals of iris", iris$Petal.Length, iris$Species)
  WriteGroups("ozone by month", airquality$Ozone[!is.na(airquality$Ozone)],
              airquality$Month[!is.na(airquality$Ozone)])
  WriteGroups("sleep", sleep$extra, sleep$group)
  eighths <- (1 + (7 * seq_len(nrow(warpbreaks))) %% 13) / 8
  WriteGroups("breaks by tension, weighted", warpbreaks$breaks, warpbreaks$tension, eighths)
  WriteGroups("feed, weighted", chickwts$weight, chickwts$feed,
              (1 + (7 * seq_len(nrow(chickwts))) %% 13) / 8)
  Save("number_groups.txt")
}

# --- merging --------------------------------------------------------------------------------------

# The multipliers as Kass 1980 gives them.
LogMultiplier <- function(kind, floating, c, r) {
  i <- 0:(r - 1)
  log(if (kind == "nominal") {
    sum((-1)^i * (r - i)^c / (factorial(i) * factorial(r - i)))
  } else if (floating) {
    choose(c - 2, r - 2) + r * choose(c - 2, r - 1)
  } else {
    choose(c - 1, r - 1)
  })
}

# Merges the least significant pair until two groups are left. `test`: gives the statistic and the
# degrees of freedom of a list of groups of categories.
WriteMerging <- function(categories, kind, floating, test) {
  LogP <- function(result) {
    if (result[2] == 0) {
      0
    } else if (length(result) == 2) {
      pchisq(result[1], result[2], lower.tail = FALSE, log.p = TRUE)
    } else {
      pf(result[1], result[2], result[3], lower.tail = FALSE, log.p = TRUE)
    }
  }
  groups <- as.list(seq_len(categories))
  while (length(groups) > 2) {
    best <- -Inf
    for (i in seq_along(groups)) {
      for (j in seq_along(groups)) {
        alone <- identical(groups[[j]], categories) && floating
        if (i < j && (kind == "nominal" || j == i + 1 || alone)) {
          log.p <- LogP(test(groups[c(i, j)]))
          if (log.p > best) {
            best <- log.p
            pair <- c(i, j)
          }
        }
      }
    }
    groups[[pair[1]]] <- sort(c(groups[[pair[1]]], groups[[pair[2]]]))
    groups <- groups[-pair[2]]
    result <- test(groups)
    group.of <- integer(categories)
    for (number in seq_along(groups)) group.of[groups[[number]]] <- number - 1
    Write("step", Number(c(best, result[1], LogP(result),
                           LogMultiplier(kind, floating, categories, length(groups)))), group.of)
  }
}

WriteClassMerging <- function(name, table, kind, floating = FALSE) {
  table <- unname(as.matrix(table))
  Write("merging", name, kind, as.integer(floating), ncol(table))
  for (row in seq_len(nrow(table))) Write("sizes", Number(table[row, ]))
  WriteMerging(nrow(table), kind, floating, function(groups) {
    merged <- do.call(rbind, lapply(groups, function(g) colSums(table[g, , drop = FALSE])))
    merged <- merged[, colSums(merged) > 0, drop = FALSE]
    if (ncol(merged) == 1) return(c(0, 0))  # nothing to test
    test <- suppressWarnings(chisq.test(merged, correct = FALSE))
    unname(c(test$statistic, test$parameter))
  })
}

WriteNumberMerging <- function(name, number, group, kind, floating = FALSE) {
  group <- as.integer(factor(group))
  Write("merging", name, kind, as.integer(floating), 0)
  for (category in seq_len(max(group))) Write("numbers", Number(number[group == category]))
  WriteMerging(max(group), kind, floating, function(groups) {
    merged <- integer(length(group))
    for (i in seq_along(groups)) merged[group %in% groups[[i]]] <- i
    data <- data.frame(number, merged = factor(merged))[merged > 0, ]
    test <- oneway.test(number ~ merged, data, var.equal = TRUE)
    unname(c(test$statistic, test$parameter))
  })
}

MakeMergings <- function() {
  departments <- t(apply(UCBAdmissions, c(1, 3), sum))
  hair <- apply(HairEyeColor, c(1, 2), sum)
  ages <- rowsum(cbind(esoph$ncases, esoph$ncontrols), esoph$agegp)
  tobacco <- rowsum(cbind(esoph$ncases, esoph$ncontrols), esoph$tobgp)
  months <- table(airquality$Month, cut(airquality$Temp, c(50, 70, 78, 84, 100)))
  hours <- table(quakes$stations %/% 15, cut(quakes$mag, c(3.9, 4.3, 4.6, 5, 7)))
  WriteClassMerging("departments", departments, "nominal")
  WriteClassMerging("hair", hair, "nominal")
  WriteClassMerging("eyes", t(hair), "nominal")
  WriteClassMerging("ages", ages, "ordinal")
  WriteClassMerging("tobacco", tobacco, "ordinal")
  WriteClassMerging("months", months, "ordinal")
  WriteClassMerging("months, the last floating", months, "ordinal", TRUE)
  WriteClassMerging("departments, the last floating", departments, "ordinal", TRUE)
  WriteClassMerging("stations", hours, "ordinal")
  WriteClassMerging("stations, nominal", hours, "nominal")
  WriteNumberMerging("feed", chickwts$weight, chickwts$feed, "nominal")
  WriteNumberMerging("sprays", InsectSprays$count, InsectSprays$spray, "nominal")
  complete <- !is.na(airquality$Ozone)
  WriteNumberMerging("ozone", airquality$Ozone[complete], airquality$Month[complete], "ordinal")
  WriteNumberMerging("ozone, the last floating", airquality$Ozone[complete],
                     airquality$Month[complete], "ordinal", TRUE)
  WriteNumberMerging("depth of quakes", quakes$depth, quakes$stations %/% 15, "nominal")
  Save("mergings.txt")
}

MakeTails()
MakeTables()
MakeNumbers()
MakeMergings()
